#include "seamrevision/partitionmerge.h"

#include "coeffiles/container.h"
#include "coeffiles/rowreader.h"
#include "coeffiles/textdump.h"
#include "coeffiles/valuebytes.h"
#include "records/pixelmath.h"
#include "records/trace.h"
#include "revision/exacttype.h"
#include "revision/filesahead.h"
#include "revision/pixelwindow.h"
#include "revision/saving.h"
#include "revision/screentable.h"
#include "singlelayer/cappedcopy.h"
#include "singlelayer/coefs.h"

#include <algorithm>
#include <optional>

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

/// Copies values out of a zone.
using CopyValues
    = void (*)(const unsigned short *values, std::size_t count, unsigned short *target);

void copyValues(const unsigned short *values, std::size_t count, unsigned short *target)
{
    std::copy_n(values, count, target);
}

/// Places a partition's own pixels out of its zone in the whole-screen table, row by row, by
/// copyValues or copyCapped, and appends them to ownCoefs if there is one. A value that either
/// array lacks ends it with a report; the values before it are copied.
bool placeIntoScreen(const Trace &trace, const IndexTags &tags, const CoefsZoneInfo &zone,
                     const PixelWindow &own, const ScreenTable &screen,
                     std::vector<unsigned short> &table, CopyValues copyIntoTable,
                     std::vector<unsigned short> *ownCoefs)
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
        copyIntoTable(values, count, table.data() + target);
        if (ownCoefs)
            copyValues(values, count, ownCoefs->data() + written);
        written += count;
        if (count < rowValues) {
            trace.critical(sourceValues <= targetValues ? tags.source : tags.target,
                           "Index out of range!");
            return false;
        }
    }
    return true;
}

/// The file of a partition as saving will write it: the own values one after the other, zeros
/// behind them. None where the zone lacks values: saving will fail.
std::vector<ComingFile> comingFile(const QString &path, const CoefsZoneInfo &zone,
                                   const AreaInfoBase &area)
{
    const PixelWindow own = windowInside(zone, area);
    if (own.rowCount == 0 || !holdsWindow(zone.m_arrayData, own))
        return {};
    const std::size_t rowValues = static_cast<std::size_t>(own.colCount) * valuesPerPixel;
    const auto makeRow = [&zone, own, rowValues](std::size_t row, unsigned char *bytes) {
        if (row < static_cast<std::size_t>(own.rowCount)) {
            const std::size_t first = own.rowStart(static_cast<qint64>(row)) * valuesPerPixel;
            writeLittleEndian(zone.m_arrayData.data() + first, rowValues, bytes);
        } else {
            std::fill_n(bytes, rowValues * sizeof(unsigned short), 0);
        }
    };
    return {{path, valueCount(areaPixelCount(area)) * sizeof(unsigned short),
             RowReader(rowValues * sizeof(unsigned short), makeRow)}};
}

void capCoefficients(std::vector<unsigned short> &coefs)
{
    for (unsigned short &value : coefs)
        value = std::min(value, coefficientCap);
}

} // namespace

/// One call of saveRevisedCoef.
class PartitionMerge::Saving
{
public:
    Saving(PartitionMerge &engine, const Trace &trace, const QString &dir,
           enum_ScreenType screenType, ST_ReviseResult &result)
        : m_engine(engine)
        , m_trace(trace)
        , m_dir(dir)
        , m_toFile(screenType == ScreenType_PartitionFile)
        , m_capsEarly(isExactly(engine))
        , m_result(result)
    {
    }

    void encryptAhead(const QMap<int, CoefsZoneInfo *> &zones,
                      const QMap<QString, AreaInfoBase *> &areas);

    static bool hasCoefs(const CoefsZoneInfo &zone) { return zone.getCoefsSize() > 0; }

    void setOwnRect(CoefsZoneInfo &areaZone, AreaInfoBase &area) const
    {
        int width = 0;
        int height = 0;
        m_engine.AreaInfoToCoefZoneInfo(&areaZone, &area, width, height);
    }

    enum_ErrCodeType save(int number, const CoefsZoneInfo &zone, CoefsZoneInfo &areaZone);
    void finish() const;

private:
    PartitionMerge &m_engine;
    const Trace &m_trace;
    const QString &m_dir;
    const bool m_toFile;
    /// Nobody sees the table before it is finished: its values are capped where they are placed.
    const bool m_capsEarly;
    ST_ReviseResult &m_result;
    std::optional<FilesAhead> m_filesAhead;
};

enum_ErrCodeType PartitionMerge::saveRevisedCoef(const QMap<int, CoefsZoneInfo *> &coefs,
                                                 QMap<QString, AreaInfoBase *> areas, QString dir,
                                                 enum_ScreenType screenType,
                                                 ST_ReviseResult &result)
{
    const Trace trace(QStringLiteral("PartitionMerge::saveRevisedCoef"));
    Saving saving(*this, trace, dir, screenType, result);
    saving.encryptAhead(coefs, areas);
    const auto code = saveEachZone(trace, {624, 634, 646, 668}, coefs, areas, saving);
    if (code == ErrCode_Success)
        saving.finish();
    return code;
}

/// With files all zones are final now; their ciphertexts may take 0.7 of the table.
void PartitionMerge::Saving::encryptAhead(const QMap<int, CoefsZoneInfo *> &zones,
                                          const QMap<QString, AreaInfoBase *> &areas)
{
    if (!m_toFile)
        return;
    const std::size_t tableBytes = m_result.coefData.size() * sizeof(unsigned short);
    m_filesAhead.emplace(zones, areas, tableBytes / 10 * 7, valuesPerPixel * sizeof(unsigned short),
                         [this](const CoefsZoneInfo &zone, const AreaInfoBase &area) {
                             return comingFile(filePath(m_dir, area.getAreaNum()), zone, area);
                         });
}

enum_ErrCodeType PartitionMerge::Saving::save(int number, const CoefsZoneInfo &zone,
                                              CoefsZoneInfo &areaZone)
{
    if (m_filesAhead)
        m_filesAhead->reach(number);
    const IndexTags indexTags = m_toFile ? IndexTags{705, 710} : IndexTags{728, 733};
    std::vector<unsigned short> *const ownCoefs = m_toFile ? &areaZone.m_arrayData : nullptr;
    if (ownCoefs)
        ownCoefs->resize(valueCount(zonePixelCount(areaZone)));
    if (!placeIntoScreen(m_trace, indexTags, zone, windowInside(zone, areaZone),
                         ScreenTable(m_engine.m_screenRect), m_result.coefData,
                         m_capsEarly ? copyCapped : copyValues, ownCoefs))
        return ErrCode_IndexOutOfRange;

    passOverFailures([&] {
        outData(zone.m_arrayData,
                QStringLiteral("normal_areaEx_") + zone.getAreaID() + QStringLiteral("_after.txt"),
                QStringLiteral(","), valuesPerPixel, QString());
    });
    if (m_toFile && !m_engine.saveCombineAreaCoef(m_dir, &areaZone)) {
        logPlain("Save combine area cofficient failed!");
        return ErrCode_SaveCombineCoefFailed;
    }
    return ErrCode_Success;
}

/// Files keep the values as revised; only the table is capped.
void PartitionMerge::Saving::finish() const
{
    if (!m_capsEarly)
        capCoefficients(m_result.coefData);
    passOverFailures([&] {
        outData(m_result.coefData, tr("分区融合后系数.txt"), QStringLiteral(","), valuesPerPixel,
                QString());
    });
}
