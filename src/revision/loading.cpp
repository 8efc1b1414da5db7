#include "revision/loading.h"

#include "records/pixelmath.h"

#include <algorithm>

namespace seamrevision
{

namespace
{

int grownFirst(int screenFirst, int areaFirst, int band)
{
    return saturatedInt(std::max<qint64>(screenFirst, qint64{areaFirst} - band));
}

int grownLast(int screenLast, int areaLast, int band)
{
    return saturatedInt(std::min<qint64>(screenLast, qint64{areaLast} + band));
}

} // namespace

void setExtendedRect(ZoneBaseInfo &zone, const AreaInfoBase &area, const NQRect &screen, int exCols,
                     int exRows)
{
    zone.setAreaID(area.getAreaNum());
    zone.setBegPixCol(grownFirst(screen.left(), area.getAreaStartCol(), exCols));
    zone.setBegPixRow(grownFirst(screen.top(), area.getAreaStartRow(), exRows));
    zone.setEndPixCol(grownLast(screen.right(), area.getAreaEndCol(), exCols));
    zone.setEndPixRow(grownLast(screen.bottom(), area.getAreaEndRow(), exRows));
}

} // namespace seamrevision
