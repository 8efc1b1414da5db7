#include "seamrevision/multilayerpartitionmerge.h"

#include "coeffiles/textdump.h"
#include "multilayer/coefs.h"
#include "multilayer/comingfiles.h"
#include "multilayer/movedrows.h"
#include "multilayer/packing.h"
#include "records/pixelmath.h"
#include "records/trace.h"
#include "revision/exacttype.h"
#include "revision/filesahead.h"
#include "revision/pixelwindow.h"
#include "revision/result.h"
#include "revision/saving.h"
#include "revision/screentable.h"
#include "seamrevision/ledzoneinfo.h"
#include "seamrevision/multilayerconfig.h"

#include <algorithm>
#include <optional>

using namespace seamrevision;

namespace
{

/// Copies a partition's own pixels out of its zone into the whole-screen table and, row by row
/// without gaps, into ownRows if there are any. False at the first pixel that either table lacks;
/// the pixels before it are copied.
bool copyIntoScreen(const MultiLayerCoefZoneInfo &zone, const PixelWindow &own,
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
            if (source >= revised.size() || target >= table.size())
                return false;
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

/// What a row of a table takes in memory: the vector and its block, for which allocators need about
/// two pointers.
std::size_t tableRowBytes(std::size_t valuesPerPixel)
{
    return sizeof(std::vector<int>) + valuesPerPixel * sizeof(int) + 2 * sizeof(void *);
}

void capCoefficients(CoefTable &table)
{
    std::for_each(table.begin(), table.end(), capRow);
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
        if (isExactly(engine))
            m_movedRows.emplace(engine.m_screenRect, result.multiLayerCoefData);
    }

    void encryptAhead(const QMap<int, MultiLayerCoefZoneInfo *> &zones,
                      const QMap<QString, AreaInfoBase *> &areas);

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

    enum_ErrCodeType save(int number, MultiLayerCoefZoneInfo &zone,
                          MultiLayerCoefZoneInfo &areaZone);
    bool saveToFiles(int number, MultiLayerCoefZoneInfo &areaZone) const;
    void finish();

private:
    void makeOwnRows(const PixelWindow &own, MultiLayerCoefZoneInfo &areaZone) const;
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
    /// Where nobody can have replaced a step, nobody sees the zones again nor the table before it
    /// is finished: the rows need not be copied.
    std::optional<MovedRows> m_movedRows;
    std::optional<FilesAhead> m_filesAhead;
};

enum_ErrCodeType MultiLayerPartitionMerge::saveRevisedCoef(
    const QMap<int, MultiLayerCoefZoneInfo *> &coefs, QMap<QString, AreaInfoBase *> areas,
    QString dir, enum_ScreenType screenType, ST_ReviseResult &result)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::saveRevisedCoef"));
    Saving saving(*this, trace, dir, screenType, result);
    saving.encryptAhead(coefs, areas);
    const auto code = saveEachZone(trace, {283, 294, 306, 325}, coefs, areas, saving);
    if (code == ErrCode_Success)
        saving.finish();
    return code;
}

/// With files all zones are final now; their ciphertexts may take 0.7 of the table with its packed
/// form.
void MultiLayerPartitionMerge::Saving::encryptAhead(
    const QMap<int, MultiLayerCoefZoneInfo *> &zones, const QMap<QString, AreaInfoBase *> &areas)
{
    if (!m_toFile || m_engine.valuesPerPixel() == 0)
        return;
    const std::size_t valuesPerPixel = m_engine.valuesPerPixel();
    const std::size_t packedBytes = valuesPerPixel / valuesPerWord * sizeof(quint32);
    const std::size_t tableBytes
        = m_result.multiLayerCoefData.size() * (tableRowBytes(valuesPerPixel) + packedBytes);
    const unsigned int packedWidth = MultiLayerConfig::instance()->coefBitWide();
    const auto filesOf = [=](const MultiLayerCoefZoneInfo &zone, const AreaInfoBase &area) {
        return comingFiles(m_dir, zone, area, valuesPerPixel, packedWidth);
    };
    m_filesAhead.emplace(zones, areas, tableBytes / 10 * 7,
                         valuesPerPixel * sizeof(int) + packedBytes, filesOf);
}

enum_ErrCodeType MultiLayerPartitionMerge::Saving::save(int number, MultiLayerCoefZoneInfo &zone,
                                                        MultiLayerCoefZoneInfo &areaZone)
{
    if (m_filesAhead)
        m_filesAhead->reach(number);
    const PixelWindow own = windowInside(zone, areaZone);
    if (m_toFile)
        makeOwnRows(own, areaZone);
    const bool isPlaced = m_movedRows
        ? m_movedRows->haveRoomFor(zone, own)
        : copyIntoScreen(zone, own, ScreenTable(m_engine.m_screenRect), m_result.multiLayerCoefData,
                         areaZone, m_toFile ? &areaZone.m_multiLayerCoefs : nullptr);
    if (!isPlaced) {
        m_trace.critical(352, "Index out of range!");
        return ErrCode_IndexOutOfRange;
    }

    passOverFailures([&] {
        outData(zone.m_multiLayerCoefs, QStringLiteral("areaEx_%1_after.txt").arg(number),
                QStringLiteral(","), QString());
    });
    if (m_movedRows && m_toFile)
        moveOwnRows(zone, own, areaZone);
    if (m_toFile && !saveToFiles(number, areaZone)) {
        logPlain("Save combine area cofficient failed!");
        return ErrCode_SaveCombineCoefFailed;
    }
    if (m_movedRows) {
        if (m_toFile)
            m_movedRows->take(areaZone, windowInside(areaZone, zone));
        else
            m_movedRows->take(zone, own);
        release(zone.m_multiLayerCoefs); // the band, which is all that is left of it
    }
    return ErrCode_Success;
}

/// Rows that are moved here bring their memory with them; the others are zeros.
void MultiLayerPartitionMerge::Saving::makeOwnRows(const PixelWindow &own,
                                                   MultiLayerCoefZoneInfo &areaZone) const
{
    const std::size_t pixelCount = zonePixelCount(areaZone);
    const bool allAreMoved = m_movedRows && own.pixelCount() == pixelCount;
    areaZone.m_multiLayerCoefs.assign(
        pixelCount, std::vector<int>(allAreMoved ? 0 : m_engine.valuesPerPixel(), 0));
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
void MultiLayerPartitionMerge::Saving::finish()
{
    if (m_movedRows)
        m_movedRows->fillUncovered(m_engine.valuesPerPixel());
    else
        capCoefficients(m_result.multiLayerCoefData);
    passOverFailures([&] {
        outData(m_result.multiLayerCoefData, tr("Multilayer_After_Revise.txt"), QStringLiteral(","),
                QString());
    });
    pack(ledZoneInfo(m_result.rect), m_result.multiLayerCoefData, m_result.zipCoefData);
}
