#pragma once

#include <seamrevision/nqrect.h>
#include <seamrevision/nqsize.h>
#include <seamrevision/revisetypes.h>

#include <QString>

#include <cstddef>
#include <map>
#include <vector>

/// Where a wall's pixels and partitions lie. Rectangles are screen pixels, all edges included.
namespace seamrevise
{

/// Columns and rows of a rectangle in 64 bits; 0 for an inverted one.
qint64 columnsOf(const NQRect &rect);
qint64 rowsOf(const NQRect &rect);

/// Pixels of a rectangle, at most 2^48: what no file holds anyway.
qint64 pixelsOf(const NQRect &rect);

bool isSameRect(const NQRect &first, const NQRect &second);

/// The pixels that two rectangles share; inverted if there are none.
NQRect shared(const NQRect &first, const NQRect &second);

/// The index of a pixel in a rectangle's row by row order.
inline std::size_t pixelIndex(const NQRect &rect, qint64 row, qint64 col)
{
    return static_cast<std::size_t>((row - rect.top()) * columnsOf(rect) + col - rect.left());
}

/// A rectangle grown by a band on each side and clipped to the screen.
NQRect grown(const NQRect &rect, const baseCommon::NQSize &band, const NQRect &screen);

/// "1920x1080".
QString sizeText(qint64 width, qint64 height);

/// A screen, its partition grid, and the band that stored zones reach beyond their partitions.
struct ScreenLayout
{
    NQRect screen;
    baseCommon::NQSize grid;
    baseCommon::NQSize band;
    std::map<int, NQRect> partitions; ///< under their numbers, from 1, row by row
};

/// A screen that starts at (0, 0), cut into partitions of as nearly equal size as whole pixels
/// allow. There must be at least a pixel for each partition in both directions.
ScreenLayout regularLayout(const baseCommon::NQSize &size, const baseCommon::NQSize &grid,
                           const baseCommon::NQSize &band);

/// Where coefficients of a partition lie: its zone reaches beyond the partition itself.
struct StoredZone
{
    int number = 0; ///< the partition's
    NQRect rect;
};

/// The zone of a partition of the layout: the partition grown by the layout's band.
StoredZone zoneOf(const ScreenLayout &layout, int number);

/// Two neighbouring partitions.
struct SeamPair
{
    int current; ///< the left or upper partition
    int next;
    enum_ReviseDirection direction;
};

/// All seams of a grid: the horizontal neighbours first, both kinds row by row.
std::vector<SeamPair> seamsOf(const baseCommon::NQSize &grid);

/// The same in the order in which the engines revise them: the vertical ones column by column.
std::vector<SeamPair> seamsInEngineOrder(const baseCommon::NQSize &grid);

} // namespace seamrevise
