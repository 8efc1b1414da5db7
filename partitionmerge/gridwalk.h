#pragma once

#include "partitionmerge/stepoutcome.h"
#include "records/nqsize.h"
#include "records/revisetypes.h"

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

/// Calls visit(number) for every partition, row by row.
template <typename Visitor>
StepOutcome forEachNumber(const baseCommon::NQSize &grid, Visitor visit)
{
    for (int row = 0; row < grid.height(); ++row) {
        for (int col = 0; col < grid.width(); ++col) {
            StepOutcome outcome = visit(row * grid.width() + col + 1);
            if (outcome.failed())
                return outcome;
        }
    }
    return {};
}

/// Calls visit(seam) for all horizontal seams row by row from the left, then for all vertical
/// ones column by column from the top.
template <typename Visitor>
StepOutcome forEachSeam(const baseCommon::NQSize &grid, Visitor visit)
{
    const int columns = grid.width();
    for (int row = 0; row < grid.height(); ++row) {
        for (int col = 0; col < columns - 1; ++col) {
            const int number = row * columns + col + 1;
            StepOutcome outcome = visit(Seam{ReviseDirection_Horizontal, number, number + 1});
            if (outcome.failed())
                return outcome;
        }
    }
    for (int col = 0; col < columns; ++col) {
        for (int row = 0; row < grid.height() - 1; ++row) {
            const int number = row * columns + col + 1;
            StepOutcome outcome = visit(Seam{ReviseDirection_Vertical, number, number + columns});
            if (outcome.failed())
                return outcome;
        }
    }
    return {};
}

} // namespace seamrevision
