#pragma once

#include "seamrevision/zonebaseinfo.h"

#include <QtGlobal>

class AreaInfoBase;

namespace seamrevision
{

/// The pixels of a zone that lie inside a rectangle, in zone-relative rows and columns.
/// A plain value; empty where the two do not meet.
struct PixelWindow
{
    qint64 firstRow = 0;
    qint64 firstCol = 0;
    qint64 rowCount = 0;
    qint64 colCount = 0;
    qint64 zoneWidth = 0; ///< pixels from one row of the zone to the next

    quint64 pixelCount() const
    {
        return static_cast<quint64>(rowCount) * static_cast<quint64>(colCount);
    }
    /// Zone-relative index of the first pixel of a row of the window. Sides are at most 2^32
    /// pixels, so that it always fits.
    quint64 rowStart(qint64 row) const
    {
        return static_cast<quint64>(firstRow + row) * static_cast<quint64>(zoneWidth)
            + static_cast<quint64>(firstCol);
    }
};

/// The pixels of zone inside the rectangle of another zone.
PixelWindow windowInside(const ZoneBaseInfo &zone, const ZoneBaseInfo &rectangle);

/// The pixels of zone inside a partition's own rectangle.
PixelWindow windowInside(const ZoneBaseInfo &zone, const AreaInfoBase &area);

} // namespace seamrevision
