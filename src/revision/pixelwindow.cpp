#include "revision/pixelwindow.h"

#include "records/pixelmath.h"
#include "seamrevision/areainfobase.h"

namespace seamrevision
{

namespace
{

/// The part of a side of a zone, from zoneFirst to zoneLast, that lies inside first to last.
struct SideOverlap
{
    SideOverlap(int zoneFirst, int zoneLast, int first, int last)
        : start(qint64{std::max(zoneFirst, first)} - zoneFirst)
        , count(sideLength(std::max(zoneFirst, first), std::min(zoneLast, last)))
    {
    }

    qint64 start;
    qint64 count;
};

PixelWindow makeWindow(const ZoneBaseInfo &zone, const SideOverlap &rows, const SideOverlap &cols)
{
    PixelWindow window;
    window.zoneWidth = zoneWidth(zone);
    if (rows.count > 0 && cols.count > 0) {
        window.firstRow = rows.start;
        window.firstCol = cols.start;
        window.rowCount = rows.count;
        window.colCount = cols.count;
    }
    return window;
}

} // namespace

PixelWindow windowInside(const ZoneBaseInfo &zone, const ZoneBaseInfo &rectangle)
{
    return makeWindow(zone,
                      {zone.getBegPixRow(), zone.getEndPixRow(), rectangle.getBegPixRow(),
                       rectangle.getEndPixRow()},
                      {zone.getBegPixCol(), zone.getEndPixCol(), rectangle.getBegPixCol(),
                       rectangle.getEndPixCol()});
}

PixelWindow windowInside(const ZoneBaseInfo &zone, const AreaInfoBase &area)
{
    return makeWindow(
        zone,
        {zone.getBegPixRow(), zone.getEndPixRow(), area.getAreaStartRow(), area.getAreaEndRow()},
        {zone.getBegPixCol(), zone.getEndPixCol(), area.getAreaStartCol(), area.getAreaEndCol()});
}

} // namespace seamrevision
