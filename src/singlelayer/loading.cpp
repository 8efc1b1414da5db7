#include "seamrevision/partitionmerge.h"

#include "records/pixelmath.h"
#include "records/trace.h"
#include "revision/loading.h"
#include "revision/pixelwindow.h"
#include "seamrevision/screendatabasemanager.h"
#include "singlelayer/coefs.h"

#include <memory>
#include <new>
#include <utility>

using namespace seamrevision;

CoefsZoneInfo *PartitionMerge::getScreenCoefEx(AreaInfoBase area, int exCols, int exRows)
{
    std::unique_ptr<CoefsZoneInfo> zone(new (std::nothrow) CoefsZoneInfo());
    if (zone)
        setExtendedRect(*zone, area, m_screenRect, exCols, exRows);
    return zone.release();
}

bool PartitionMerge::readCofficients(CoefsZoneInfo *zone, AreaInfoBase *area)
{
    const Trace trace(QStringLiteral("PartitionMerge::readCofficients"));
    const ReadingTags tags{863, 867, 872, 877, 881};
    return readStoredZone(trace, tags, m_pScreenDBManager, *area, [&](ScreenDataBaseManager &db) {
        return db.readAreaCoefficients(saturatedInt(qint64{area->getAreaIndex()} + 1), *zone);
    });
}

void PartitionMerge::AreaInfoToCoefZoneInfo(CoefsZoneInfo *zone, AreaInfoBase *area, int &width,
                                            int &height)
{
    const Trace trace(QStringLiteral("PartitionMerge::AreaInfoToCoefZoneInfo"));
    trace.debug(835, "enter!");
    if (!zone) {
        trace.critical(839, "coefZoneInfo is nullptr!");
        return;
    }
    if (!area) {
        trace.critical(844, "coefZoneInfo is nullptr!");
        return;
    }
    zone->setBegPixCol(area->getAreaStartCol());
    zone->setBegPixRow(area->getAreaStartRow());
    zone->setEndPixCol(area->getAreaEndCol());
    zone->setEndPixRow(area->getAreaEndRow());
    zone->setAreaID(area->getAreaNum());
    width = signedSideLength(zone->getBegPixCol(), zone->getEndPixCol());
    height = signedSideLength(zone->getBegPixRow(), zone->getEndPixRow());
    trace.debug(855, "end!");
}

bool PartitionMerge::subInfoCoefToAreaCoef(CoefsZoneInfo *subInfoCoef, CoefsZoneInfo *areaCoef)
{
    const Trace trace(QStringLiteral("PartitionMerge::subInfoCoefToAreaCoef"));
    trace.debug(447, "start!");
    if (!subInfoCoef) {
        trace.critical(451, "The subInfoCoef is nullptr!");
        return false;
    }
    if (!areaCoef) {
        trace.critical(456, "The areaCoef is nullptr!");
        return false;
    }
    if (subInfoCoef->getCoefsSize() == 0) {
        trace.warning(461, "The subInfoCoef is empty!");
        return false;
    }

    const PixelWindow window = windowInside(*subInfoCoef, *areaCoef);
    const std::vector<unsigned short> &stored = subInfoCoef->m_arrayData;
    if (!holdsWindow(stored, window)) {
        trace.critical(484, "The index out of range!");
        return false;
    }
    areaCoef->m_arrayData = cutOut(stored, window);
    trace.debug(494, "end!");
    return true;
}
