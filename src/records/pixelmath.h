#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <limits>

/// Sizes of pixel rectangles. Edges come from hosts and databases and may be anything an int can
/// hold, so lengths are computed in 64 bits and clamped at 0 before they are multiplied.
namespace seamrevision
{

/// The nearest value that an int can hold.
inline int saturatedInt(qint64 value)
{
    return static_cast<int>(std::clamp<qint64>(value, std::numeric_limits<int>::min(),
                                               std::numeric_limits<int>::max()));
}

/// last - first + 1 or the nearest int: the number of pixels from first to last, both included,
/// and below 1 when last lies before first.
inline int signedSideLength(int first, int last)
{
    return saturatedInt(qint64{last} - first + 1);
}

/// The same, clamped at 0. It fits an int, so that the product of two lengths fits 64 bits.
inline qint64 sideLength(int first, int last)
{
    return std::max(0, signedSideLength(first, last));
}

/// Columns and rows of a zone (anything with the four edges of ZoneBaseInfo).
template <typename Zone>
qint64 zoneWidth(const Zone &zone)
{
    return sideLength(zone.getBegPixCol(), zone.getEndPixCol());
}

template <typename Zone>
qint64 zoneHeight(const Zone &zone)
{
    return sideLength(zone.getBegPixRow(), zone.getEndPixRow());
}

/// Columns and rows of a partition (AreaInfoBase).
template <typename Area>
qint64 areaWidth(const Area &area)
{
    return sideLength(area.getAreaStartCol(), area.getAreaEndCol());
}

template <typename Area>
qint64 areaHeight(const Area &area)
{
    return sideLength(area.getAreaStartRow(), area.getAreaEndRow());
}

/// Pixels of a zone and of a partition.
template <typename Zone>
std::size_t zonePixelCount(const Zone &zone)
{
    return static_cast<std::size_t>(zoneWidth(zone) * zoneHeight(zone));
}

template <typename Area>
std::size_t areaPixelCount(const Area &area)
{
    return static_cast<std::size_t>(areaWidth(area) * areaHeight(area));
}

} // namespace seamrevision
