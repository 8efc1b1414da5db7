#include "seamrevision/multilayerpartitionmerge.h"

#include "coeffiles/textdump.h"
#include "multilayer/packing.h"
#include "records/pixelmath.h"
#include "records/trace.h"
#include "revision/pixelwindow.h"
#include "revision/saving.h"
#include "revision/screentable.h"
#include "seamrevision/ledzoneinfo.h"
#include "seamrevision/multilayerconfig.h"

#include <algorithm>

using namespace seamrevision;

namespace
{

/// The largest value that the whole-screen table may hold after saving.
constexpr int coefficientCap = 4096;

using CoefTable = std::vector<std::vector<int>>;

/// Copies a partition's own pixels out of its zone into the whole-screen table and, row by row
/// without gaps, into ownRows if there are any. A pixel that either table lacks ends it with a
/// report; the pixels before it are copied.
bool placeIntoScreen(const Trace &trace, const MultiLayerCoefZoneInfo &zone, const PixelWindow &own,
                     const ScreenTable &screen, CoefTable &table, const ZoneBaseInfo &area,
                     CoefTable *ownRows)
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

/// One call of saveRevisedCoef.
class MultiLayerPartitionMerge::Saving
{
public:
    Saving(MultiLayerPartitionMerge &engine, const Trace &trace, const QString &dir,
           enum_ScreenType screenType, ST_ReviseResult &result)
        : m_engine(engine)
        , m_trace(trace)
        , m_dir(dir)
        , m_toFile(screenType == ScreenType_PartitionFile)
        , m_result(result)
    {
    }

    static bool hasCoefs(const MultiLayerCoefZoneInfo &zone)
    {
        return !zone.m_multiLayerCoefs.empty();
    }

    void setOwnRect(MultiLayerCoefZoneInfo &areaZone, AreaInfoBase &area) const
    {
        int width = 0;
        int height = 0;
        m_engine.AreaInfoToCoefZoneInfo(&areaZone, &area, width, height);
    }

    enum_ErrCodeType save(int number, const MultiLayerCoefZoneInfo &zone,
                          MultiLayerCoefZoneInfo &areaZone) const;
    bool saveToFiles(int number, MultiLayerCoefZoneInfo &areaZone) const;
    void finish() const;

private:
    /// Packs a table with the width that is configured at the time.
    void pack(const ST_LedZoneInfo &rect, const CoefTable &table,
              std::vector<unsigned char> &packed) const
    {
        packCoefs(rect, table, MultiLayerConfig::instance()->coefBitWide(), m_engine.m_layerSize,
                  packed);
    }

    MultiLayerPartitionMerge &m_engine;
    const Trace &m_trace;
    const QString &m_dir;
    const bool m_toFile;
    ST_ReviseResult &m_result;
};

enum_ErrCodeType MultiLayerPartitionMerge::saveRevisedCoef(
    const QMap<int, MultiLayerCoefZoneInfo *> &coefsZoneInfos, QMap<QString, AreaInfoBase *> areas,
    QString dir, enum_ScreenType screenType, ST_ReviseResult &result)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::saveRevisedCoef"));
    const Saving saving(*this, trace, dir, screenType, result);
    const auto code = saveEachZone(trace, {283, 294, 306, 325}, coefsZoneInfos, areas, saving);
    if (code == ErrCode_Success)
        saving.finish();
    return code;
}

enum_ErrCodeType MultiLayerPartitionMerge::Saving::save(int number,
                                                        const MultiLayerCoefZoneInfo &zone,
                                                        MultiLayerCoefZoneInfo &areaZone) const
{
    CoefTable *const ownRows = m_toFile ? &areaZone.m_multiLayerCoefs : nullptr;
    if (ownRows)
        ownRows->assign(zonePixelCount(areaZone), std::vector<int>(m_engine.valuesPerPixel(), 0));
    if (!placeIntoScreen(m_trace, zone, windowInside(zone, areaZone),
                         ScreenTable(m_engine.m_screenRect), m_result.multiLayerCoefData, areaZone,
                         ownRows))
        return ErrCode_IndexOutOfRange;

    passOverFailures([&] {
        outData(zone.m_multiLayerCoefs, QStringLiteral("areaEx_%1_after.txt").arg(number),
                QStringLiteral(","), QString());
    });
    if (m_toFile && !saveToFiles(number, areaZone)) {
        logPlain("Save combine area cofficient failed!");
        return ErrCode_SaveCombineCoefFailed;
    }
    return ErrCode_Success;
}

bool MultiLayerPartitionMerge::Saving::saveToFiles(int number,
                                                   MultiLayerCoefZoneInfo &areaZone) const
{
    pack(ledZoneInfo(areaZone), areaZone.m_multiLayerCoefs, areaZone.m_zipCoefs);
    passOverFailures([&] {
        outData(areaZone.m_zipCoefs, QStringLiteral("areaEx_%1_afterZIP.txt").arg(number),
                QString(), 1, QString());
    });
    return m_engine.saveCombineAreaCoef(m_dir, &areaZone);
}

/// Files keep the values as revised; only the table is capped.
void MultiLayerPartitionMerge::Saving::finish() const
{
    capCoefficients(m_result.multiLayerCoefData);
    passOverFailures([&] {
        outData(m_result.multiLayerCoefData, tr("Multilayer_After_Revise.txt"), QStringLiteral(","),
                QString());
    });
    pack(ledZoneInfo(m_result.rect), m_result.multiLayerCoefData, m_result.zipCoefData);
}
