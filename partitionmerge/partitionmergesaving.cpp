#include "partitionmerge/partitionmerge.h"

#include "coeffiles/textdump.h"
#include "partitionmerge/pixelwindow.h"
#include "partitionmerge/savingsteps.h"
#include "partitionmerge/screentable.h"
#include "partitionmerge/singlelayer.h"
#include "records/pixelmath.h"
#include "records/trace.h"

#include <algorithm>
#include <memory>
#include <new>

using namespace seamrevision;

namespace
{

struct IndexTags
{
    int source;
    int target;
};

/// Index of a pixel's first value in an array; the end of the array for pixels that it lacks.
/// The pixel is compared unsigned: a negative one lies beyond every array.
std::size_t firstValue(quint64 pixel, const std::vector<unsigned short> &coefs)
{
    return std::min<quint64>(std::min<quint64>(pixel, coefs.size()) * valuesPerPixel, coefs.size());
}

/// Copies a partition's own pixels out of its zone into the whole-screen table, row by row, and
/// appends them to ownCoefs if there is one. A value that either array lacks ends it with a
/// report; the values before it are copied.
bool placeIntoScreen(const Trace &trace, const IndexTags &tags, const CoefsZoneInfo &zone,
                     const PixelWindow &own, const ScreenTable &screen,
                     std::vector<unsigned short> &table, std::vector<unsigned short> *ownCoefs)
{
    const std::size_t rowValues = static_cast<std::size_t>(own.colCount) * valuesPerPixel;
    std::size_t written = 0;
    for (qint64 row = 0; row < own.rowCount; ++row) {
        const qint64 screenPixel = screen.pixel(zone.getBegPixRow() + own.firstRow + row,
                                                zone.getBegPixCol() + own.firstCol);
        const std::size_t source = firstValue(own.rowStart(row), zone.m_arrayData);
        const std::size_t target = firstValue(static_cast<quint64>(screenPixel), table);
        const std::size_t sourceValues = zone.m_arrayData.size() - source;
        const std::size_t targetValues = table.size() - target;
        const std::size_t count = std::min({rowValues, sourceValues, targetValues});
        const unsigned short *const values = zone.m_arrayData.data() + source;
        std::copy_n(values, count, table.data() + target);
        if (ownCoefs)
            std::copy_n(values, count, ownCoefs->data() + written);
        written += count;
        if (count < rowValues) {
            trace.critical(sourceValues <= targetValues ? tags.source : tags.target,
                           "Index out of range!");
            return false;
        }
    }
    return true;
}

void capCoefficients(std::vector<unsigned short> &coefs)
{
    for (unsigned short &value : coefs)
        value = std::min(value, coefficientCap);
}

} // namespace

enum_ErrCodeType PartitionMerge::saveRevisedCoef(const QMap<int, CoefsZoneInfo *> &coefs,
                                                 QMap<QString, AreaInfoBase *> areas, QString path,
                                                 enum_ScreenType screenType,
                                                 ST_ReviseResult &result)
{
    const Trace trace(QStringLiteral("PartitionMerge::saveRevisedCoef"));
    const ScreenTable screen(m_screenRect);
    const bool toFile = screenType == ScreenType_PartitionFile;
    const IndexTags indexTags = toFile ? IndexTags{705, 710} : IndexTags{728, 733};
    const auto isEmpty = [](const CoefsZoneInfo &zone) { return zone.getCoefsSize() == 0; };

    const auto savePartition = [&](int, const CoefsZoneInfo &zone, AreaInfoBase &area) {
        const std::unique_ptr<CoefsZoneInfo> areaZone(new (std::nothrow) CoefsZoneInfo());
        if (!areaZone) {
            trace.critical(668, "The pCoefsZoneInfo is nullptr!");
            return ErrCode_Failed;
        }
        int width = 0;
        int height = 0;
        AreaInfoToCoefZoneInfo(areaZone.get(), &area, width, height);
        std::vector<unsigned short> *const ownCoefs = toFile ? &areaZone->m_arrayData : nullptr;
        if (ownCoefs)
            ownCoefs->assign(valueCount(zonePixelCount(*areaZone)), 0);
        if (!placeIntoScreen(trace, indexTags, zone, windowInside(zone, *areaZone), screen,
                             result.coefData, ownCoefs))
            return ErrCode_IndexOutOfRange;
        outData(zone.m_arrayData,
                QStringLiteral("normal_areaEx_") + zone.getAreaID() + QStringLiteral("_after.txt"),
                QStringLiteral(","), valuesPerPixel, QString());
        if (toFile && !saveCombineAreaCoef(path, areaZone.get())) {
            logPlain("Save combine area cofficient failed!");
            return ErrCode_SaveCombineCoefFailed;
        }
        return ErrCode_Success;
    };

    const SavingTags tags{624, 634, 646};
    const auto code = forEachSavedZone(trace, tags, coefs, areas, isEmpty, savePartition);
    if (code != ErrCode_Success)
        return code;
    capCoefficients(result.coefData);
    outData(result.coefData, tr("分区融合后系数.txt"), QStringLiteral(","), valuesPerPixel,
            QString());
    return ErrCode_Success;
}
