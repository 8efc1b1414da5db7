#include "multilayer/multilayerpartitionmerge.h"

#include "coeffiles/textdump.h"
#include "multilayer/packing.h"
#include "partitionmerge/pixelwindow.h"
#include "partitionmerge/savingsteps.h"
#include "partitionmerge/screentable.h"
#include "records/ledzoneinfo.h"
#include "records/multilayerconfig.h"
#include "records/pixelmath.h"
#include "records/trace.h"

#include <algorithm>
#include <memory>
#include <new>

using namespace seamrevision;

namespace
{

/// The largest value that the whole-screen table may hold after saving.
constexpr int coefficientCap = 4096;

using CoefTable = std::vector<std::vector<int>>;

/// Copies a partition's own pixels out of its zone into the whole-screen table and, row by row
/// without gaps, into ownRows if there are any. A pixel that either table lacks ends it with a
/// report; the pixels before it are copied.
bool placeIntoScreen(const Trace &trace, const MultiLayerCoefZoneInfo &zone,
                     const PixelWindow &own, const ScreenTable &screen, CoefTable &table,
                     const ZoneBaseInfo &area, CoefTable *ownRows)
{
    const CoefTable &revised = zone.m_multiLayerCoefs;
    for (qint64 row = 0; row < own.rowCount; ++row) {
        const qint64 screenRow = zone.getBegPixRow() + own.firstRow + row;
        for (qint64 col = 0; col < own.colCount; ++col) {
            const qint64 screenCol = zone.getBegPixCol() + own.firstCol + col;
            const quint64 source = own.rowStart(row) + static_cast<quint64>(col);
            const auto target = static_cast<quint64>(screen.pixel(screenRow, screenCol));
            if (source >= revised.size() || target >= table.size()) {
                trace.critical(352, "Index out of range!");
                return false;
            }
            table[target] = revised[source];
            if (ownRows) {
                const qint64 place = (screenRow - area.getBegPixRow()) * zoneWidth(area)
                    + (screenCol - area.getBegPixCol());
                (*ownRows)[static_cast<std::size_t>(place)] = revised[source];
            }
        }
    }
    return true;
}

void capCoefficients(CoefTable &table)
{
    for (std::vector<int> &row : table) {
        for (int &value : row)
            value = std::min(value, coefficientCap);
    }
}

} // namespace

enum_ErrCodeType MultiLayerPartitionMerge::saveRevisedCoef(
    const QMap<int, MultiLayerCoefZoneInfo *> &coefsZoneInfos, QMap<QString, AreaInfoBase *> areas,
    QString dir, enum_ScreenType screenType, ST_ReviseResult &result)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::saveRevisedCoef"));
    const ScreenTable screen(m_screenRect);
    const bool toFile = screenType == ScreenType_PartitionFile;
    const auto isEmpty
        = [](const MultiLayerCoefZoneInfo &zone) { return zone.m_multiLayerCoefs.empty(); };

    const auto savePartition = [&](int number, const MultiLayerCoefZoneInfo &zone,
                                   AreaInfoBase &area) {
        const std::unique_ptr<MultiLayerCoefZoneInfo> areaZone(new (std::nothrow)
                                                                   MultiLayerCoefZoneInfo());
        if (!areaZone) {
            trace.critical(325, "The pCoefsZoneInfo is nullptr!");
            return ErrCode_Failed;
        }
        int width = 0;
        int height = 0;
        AreaInfoToCoefZoneInfo(areaZone.get(), &area, width, height);
        CoefTable *const ownRows = toFile ? &areaZone->m_multiLayerCoefs : nullptr;
        if (ownRows)
            ownRows->assign(zonePixelCount(*areaZone), std::vector<int>(valuesPerPixel(), 0));
        if (!placeIntoScreen(trace, zone, windowInside(zone, *areaZone), screen,
                             result.multiLayerCoefData, *areaZone, ownRows))
            return ErrCode_IndexOutOfRange;
        const QString dumpName = QStringLiteral("areaEx_") + QString::number(number);
        outData(zone.m_multiLayerCoefs, dumpName + QStringLiteral("_after.txt"),
                QStringLiteral(","), QString());
        if (!toFile)
            return ErrCode_Success;
        packCoefs(ledZoneInfo(*areaZone), areaZone->m_multiLayerCoefs,
                  MultiLayerConfig::instance()->coefBitWide(), m_layerSize, areaZone->m_zipCoefs);
        outData(areaZone->m_zipCoefs, dumpName + QStringLiteral("_afterZIP.txt"), QString(), 1,
                QString());
        if (!saveCombineAreaCoef(dir, areaZone.get())) {
            logPlain("Save combine area cofficient failed!");
            return ErrCode_SaveCombineCoefFailed;
        }
        return ErrCode_Success;
    };

    const SavingTags tags{283, 294, 306};
    const auto code = forEachSavedZone(trace, tags, coefsZoneInfos, areas, isEmpty, savePartition);
    if (code != ErrCode_Success)
        return code;
    capCoefficients(result.multiLayerCoefData);
    outData(result.multiLayerCoefData, tr("Multilayer_After_Revise.txt"), QStringLiteral(","),
            QString());
    packCoefs(ledZoneInfo(result.rect), result.multiLayerCoefData,
              MultiLayerConfig::instance()->coefBitWide(), m_layerSize, result.zipCoefData);
    return ErrCode_Success;
}
