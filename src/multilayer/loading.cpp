#include "seamrevision/multilayerpartitionmerge.h"

#include "multilayer/coefs.h"
#include "records/pixelmath.h"
#include "records/trace.h"
#include "revision/loading.h"
#include "revision/pixelwindow.h"
#include "seamrevision/screendatabasemanager.h"

#include <memory>
#include <new>

using namespace seamrevision;

MultiLayerCoefZoneInfo *MultiLayerPartitionMerge::getScreenCoefEx(const AreaInfoBase &area,
                                                                  int exCols, int exRows)
{
    std::unique_ptr<MultiLayerCoefZoneInfo> zone(new (std::nothrow) MultiLayerCoefZoneInfo());
    if (zone)
        setExtendedRect(*zone, area, m_screenRect, exCols, exRows);
    return zone.release();
}

bool MultiLayerPartitionMerge::readCofficients(MultiLayerCoefZoneInfo *zone, AreaInfoBase *area)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::readCofficients"));
    const ReadingTags tags{527, 531, 536, 542, 546};
    return readStoredZone(trace, tags, m_pScreenDBManager, *area, [&](ScreenDataBaseManager &db) {
        const auto layerSize = static_cast<unsigned int>(m_layerSize);
        const auto number = static_cast<unsigned int>(area->getAreaIndex()) + 1U;
        return db.readMultiLayerAreaCoefficients(layerSize, number, *zone);
    });
}

bool MultiLayerPartitionMerge::subInfoCoefToAreaCoef(MultiLayerCoefZoneInfo *subInfoCoef,
                                                     MultiLayerCoefZoneInfo *areaCoef)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::subInfoCoefToAreaCoef"));
    if (!subInfoCoef) {
        trace.critical(560, "The subInfoCoef is nullptr!");
        return false;
    }
    if (!areaCoef) {
        trace.critical(565, "The areaCoef is nullptr!");
        return false;
    }
    if (subInfoCoef->m_multiLayerCoefs.empty()) {
        trace.warning(570, "The subInfoCoef is empty!");
        return false;
    }

    const PixelWindow window = windowInside(*subInfoCoef, *areaCoef);
    const CoefTable &stored = subInfoCoef->m_multiLayerCoefs;
    areaCoef->m_multiLayerCoefs.resize(zonePixelCount(*areaCoef));
    std::vector<int> *target = areaCoef->m_multiLayerCoefs.data();
    for (qint64 row = 0; row < window.rowCount; ++row) {
        const quint64 first = window.rowStart(row);
        for (quint64 pixel = first; pixel < first + static_cast<quint64>(window.colCount);
             ++pixel) {
            if (pixel >= stored.size()) {
                trace.critical(598, "The index out of range!");
                return false;
            }
            *target++ = stored[pixel];
        }
    }
    return true;
}
