#pragma once

#include <seamrevision/areainfobase.h>
#include <seamrevision/coefszoneinfo.h>
#include <seamrevision/multilayercoefzoneinfo.h>
#include <seamrevision/nqrect.h>
#include <seamrevision/nqsize.h>
#include <seamrevision/reviseresult.h>
#include <seamrevision/screendatabasemanager.h>

#include <QMap>
#include <QString>

#include <map>
#include <memory>
#include <string>
#include <vector>

class PartitionMerge;

namespace bench
{

constexpr int gridColumns = 8;
constexpr int gridRows = 6;
constexpr int band = 16;
constexpr int layerCount = 4;
constexpr std::size_t valuesPerLayeredPixel = 3 * layerCount;

/// A wall of 8 x 6 partitions, all corrected, with the host's records.
class Wall
{
public:
    Wall(int width, int height);

    /// A tenth of a side in a short run.
    static Wall ofSize(int width, int height);

    const QMap<QString, AreaInfoBase *> &areas() const { return m_areas; }
    const NQRect &screen() const { return m_screen; }
    std::size_t pixelCount() const { return static_cast<std::size_t>(m_screen.area()); }
    /// A partition with the band around it, as a zone without coefficients.
    ZoneBaseInfo extended(int number) const;
    const AreaInfoBase &partition(int number) const;

    ST_ReviseResult reviseWith(PartitionMerge &engine, enum_ScreenType type = {},
                               const QString &directory = QString()) const;

private:
    NQRect m_screen;
    std::vector<std::unique_ptr<AreaInfoBase>> m_records;
    QMap<QString, AreaInfoBase *> m_areas;
};

/// The stored coefficients of a wall in memory: empty zones when asked for numbers, copies when
/// asked for coefficients. Values are noise around gain 1, some of them above the cap.
class MemoryDatabase : public ScreenDataBaseManager
{
public:
    enum class Kind
    {
        SingleLayer,
        Layered
    };
    /// How the zone that the engine hands over gets its layered rows.
    enum class Filling
    {
        InPlace, ///< the values are written into the rows that are there
        Replace  ///< the zone gets a new table
    };
    MemoryDatabase(const Wall &wall, Kind kind, Filling filling = Filling::InPlace);

    /// Fills a table with stored rows, in the database's manner.
    void fillRows(const std::vector<std::vector<int>> &storedRows,
                  std::vector<std::vector<int>> &rows) const;

    /// Whether it does not want the rows back that it has filled.
    bool replacesRows() const { return m_filling == Filling::Replace; }

    int ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones) override;
    int readAreaCoefficients(int number, CoefsZoneInfo &zone) override;
    int ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &numbers) override;
    int readMultiLayerAreaCoefficients(const unsigned int &layerSize, const unsigned int &number,
                                       MultiLayerCoefZoneInfo &zone) override;

    /// Stored zones by number; both kinds of coefficients are in the same record.
    std::map<int, MultiLayerCoefZoneInfo> stored;

private:
    const Filling m_filling;
};

} // namespace bench
