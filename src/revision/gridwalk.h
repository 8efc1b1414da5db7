#pragma once

#include "records/pixelmath.h"
#include "revision/stepoutcome.h"
#include "seamrevision/nqsize.h"
#include "seamrevision/revisetypes.h"

/// The orders in which a revision visits a grid of partitions, numbered from 1 row by row. A walk
/// ends at the first outcome that is a failure and returns it.
namespace seamrevision
{

/// Two neighbouring partitions, by their numbers.
struct Seam
{
    enum_ReviseDirection direction;
    int current;
    int next;
};

/// Calls visit(outer, inner) for every outer number below the one count and, within it, every
/// inner number below the other one.
template <typename Visitor>
StepOutcome forEachPair(qint64 outerCount, qint64 innerCount, Visitor visit)
{
    if (innerCount <= 0) // the outer numbers may be billions, with nothing to visit
        return {};
    for (qint64 outer = 0; outer < outerCount; ++outer) {
        for (qint64 inner = 0; inner < innerCount; ++inner) {
            StepOutcome outcome = visit(outer, inner);
            if (outcome.failed())
                return outcome;
        }
    }
    return {};
}

/// Calls visit(number) for every partition, row by row.
template <typename Visitor>
StepOutcome forEachNumber(const baseCommon::NQSize &grid, Visitor visit)
{
    const qint64 columns = grid.width();
    return forEachPair(grid.height(), columns,
                       [&](qint64 row, qint64 col) { return visit(row * columns + col + 1); });
}

/// Calls visit(seam) for all horizontal seams row by row from the left, then for all vertical
/// ones column by column from the top. A number that no int can hold becomes the largest int.
template <typename Visitor>
StepOutcome forEachSeam(const baseCommon::NQSize &grid, Visitor visit)
{
    const qint64 columns = grid.width();
    const qint64 rows = grid.height();
    const auto visitSeam = [&](enum_ReviseDirection direction, qint64 row, qint64 col,
                               qint64 toNext) -> StepOutcome {
        const qint64 number = row * columns + col + 1;
        return visit(Seam{direction, saturatedInt(number), saturatedInt(number + toNext)});
    };
    StepOutcome outcome = forEachPair(rows, columns - 1, [&](qint64 row, qint64 col) {
        return visitSeam(ReviseDirection_Horizontal, row, col, 1);
    });
    if (outcome.failed())
        return outcome;
    return forEachPair(columns, rows - 1, [&](qint64 col, qint64 row) {
        return visitSeam(ReviseDirection_Vertical, row, col, columns);
    });
}

} // namespace seamrevision
