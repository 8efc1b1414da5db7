#include "numbers/strip.h"

#include <algorithm>

namespace seamrevise
{

namespace
{

/// What two zones share, less the lines that only one of the partitions owns.
NQRect stripRect(const NQRect &current, const NQRect &next, const NQRect &sharedZone,
                 enum_ReviseDirection direction)
{
    if (direction == ReviseDirection_Horizontal)
        return NQRect(sharedZone.left(), std::max(current.top(), next.top()), sharedZone.right(),
                      std::min(current.bottom(), next.bottom()));
    return NQRect(std::max(current.left(), next.left()), sharedZone.top(),
                  std::min(current.right(), next.right()), sharedZone.bottom());
}

} // namespace

Strip stripOf(const ScreenLayout &layout, const SeamPair &seam, const baseCommon::NQSize &band)
{
    const NQRect &current = layout.partitions.at(seam.current);
    const NQRect &next = layout.partitions.at(seam.next);
    Strip strip;
    strip.seam = seam;
    strip.rect
        = stripRect(current, next,
                    shared(grown(current, band, layout.screen), grown(next, band, layout.screen)),
                    seam.direction);
    if (pixelsOf(strip.rect) == 0)
        return strip;
    const auto columns = static_cast<int>(columnsOf(strip.rect));
    const auto rows = static_cast<int>(rowsOf(strip.rect));
    strip.width = strip.isHorizontal() ? columns : rows;
    strip.lineCount = strip.isHorizontal() ? rows : columns;
    strip.ownPositions = strip.isHorizontal() ? current.right() - strip.rect.left() + 1
                                              : current.bottom() - strip.rect.top() + 1;
    return strip;
}

int blendedPositions(const Strip &strip, int margin)
{
    return static_cast<int>(std::max<qint64>(0, strip.width - 2 * qint64{std::max(0, margin)}));
}

NQRect outsideStrips(const ScreenLayout &layout, int number, const std::set<int> &corrected,
                     const baseCommon::NQSize &band)
{
    const NQRect &own = layout.partitions.at(number);
    // What the zone of a neighbour reaches of this partition.
    const auto reached = [&](bool exists, int neighbour) {
        return exists && corrected.count(neighbour) != 0
            ? shared(own, grown(layout.partitions.at(neighbour), band, layout.screen))
            : NQRect();
    };
    const int columns = layout.grid.width();
    const int col = (number - 1) % columns;
    const int row = (number - 1) / columns;
    const NQRect fromLeft = reached(col > 0, number - 1);
    const NQRect fromRight = reached(col + 1 < columns, number + 1);
    const NQRect fromAbove = reached(row > 0, number - columns);
    const NQRect fromBelow = reached(row + 1 < layout.grid.height(), number + columns);
    return NQRect(pixelsOf(fromLeft) > 0 ? fromLeft.right() + 1 : own.left(),
                  pixelsOf(fromAbove) > 0 ? fromAbove.bottom() + 1 : own.top(),
                  pixelsOf(fromRight) > 0 ? fromRight.left() - 1 : own.right(),
                  pixelsOf(fromBelow) > 0 ? fromBelow.top() - 1 : own.bottom());
}

} // namespace seamrevise
