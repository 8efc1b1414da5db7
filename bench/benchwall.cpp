#include "benchwall.h"

#include "figures.h"
#include "records/pixelmath.h"
#include <seamrevision/partitionmerge.h>

#include <algorithm>

namespace bench
{

namespace
{

/// The same noise on every run: a plain linear congruence, its upper half.
class Noise
{
public:
    explicit Noise(int seed)
        : m_state(static_cast<quint32>(seed) * 2654435761U + 1)
    {
    }

    /// From 0 to below - 1.
    unsigned below(unsigned limit)
    {
        m_state = m_state * 1664525U + 1013904223U;
        return (m_state >> 16) % limit;
    }

private:
    quint32 m_state;
};

void fillSingleLayer(MultiLayerCoefZoneInfo &zone, int number)
{
    Noise noise(number);
    zone.m_arrayData.resize(seamrevision::zonePixelCount(zone) * 9);
    for (unsigned short &value : zone.m_arrayData)
        value = static_cast<unsigned short>(noise.below(3000));
}

void fillLayered(MultiLayerCoefZoneInfo &zone, int number)
{
    Noise noise(number);
    zone.m_multiLayerCoefs.assign(seamrevision::zonePixelCount(zone),
                                  std::vector<int>(valuesPerLayeredPixel));
    for (std::vector<int> &row : zone.m_multiLayerCoefs) {
        for (int &value : row)
            value = static_cast<int>(noise.below(6000));
    }
}

void copyRect(const ZoneBaseInfo &from, ZoneBaseInfo &to)
{
    to = from;
}

} // namespace

Wall::Wall(int width, int height)
    : m_screen(0, 0, width - 1, height - 1)
{
    for (int row = 0; row < gridRows; ++row) {
        for (int col = 0; col < gridColumns; ++col) {
            const int index = row * gridColumns + col;
            m_records.push_back(std::make_unique<AreaInfoBase>(
                index, row * height / gridRows, col * width / gridColumns,
                (row + 1) * height / gridRows - 1, (col + 1) * width / gridColumns - 1));
            m_areas.insert(QString::number(index + 1), m_records.back().get());
        }
    }
}

Wall Wall::ofSize(int width, int height)
{
    return isShortRun() ? Wall(width / 10, height / 10) : Wall(width, height);
}

const AreaInfoBase &Wall::partition(int number) const
{
    return *m_records[static_cast<std::size_t>(number - 1)];
}

ZoneBaseInfo Wall::extended(int number) const
{
    const AreaInfoBase &area = partition(number);
    ZoneBaseInfo zone;
    zone.setAreaID(area.getAreaNum());
    zone.setBegPixRow(std::max(m_screen.top(), area.getAreaStartRow() - band));
    zone.setBegPixCol(std::max(m_screen.left(), area.getAreaStartCol() - band));
    zone.setEndPixRow(std::min(m_screen.bottom(), area.getAreaEndRow() + band));
    zone.setEndPixCol(std::min(m_screen.right(), area.getAreaEndCol() + band));
    return zone;
}

ST_ReviseResult Wall::reviseWith(PartitionMerge &engine, enum_ScreenType type,
                                 const QString &directory) const
{
    return engine.boundaryModifying(directory, type, m_areas,
                                    baseCommon::NQSize(gridColumns, gridRows), m_screen,
                                    baseCommon::NQSize(band, band), 0);
}

MemoryDatabase::MemoryDatabase(const Wall &wall, Kind kind, Filling filling)
    : m_filling(filling)
{
    for (int number = 1; number <= gridColumns * gridRows; ++number) {
        MultiLayerCoefZoneInfo &zone = stored[number];
        copyRect(wall.extended(number), zone);
        kind == Kind::Layered ? fillLayered(zone, number) : fillSingleLayer(zone, number);
    }
}

int MemoryDatabase::ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones)
{
    for (const auto &entry : stored)
        zones.insert(entry.first, new CoefsZoneInfo());
    return 0;
}

int MemoryDatabase::readAreaCoefficients(int number, CoefsZoneInfo &zone)
{
    const MultiLayerCoefZoneInfo &found = stored.at(number);
    copyRect(found, zone);
    zone.m_arrayData = found.m_arrayData;
    return 0;
}

int MemoryDatabase::ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &numbers)
{
    for (const auto &entry : stored)
        numbers.push_back(entry.first);
    return 0;
}

int MemoryDatabase::readMultiLayerAreaCoefficients(const unsigned int &, const unsigned int &number,
                                                   MultiLayerCoefZoneInfo &zone)
{
    const MultiLayerCoefZoneInfo &found = stored.at(static_cast<int>(number));
    copyRect(found, zone);
    fillRows(found.m_multiLayerCoefs, zone.m_multiLayerCoefs);
    return 0;
}

void MemoryDatabase::fillRows(const std::vector<std::vector<int>> &storedRows,
                              std::vector<std::vector<int>> &rows) const
{
    if (m_filling == Filling::Replace)
        rows = std::vector<std::vector<int>>(storedRows);
    else
        rows = storedRows; // row by row, into the memory that each of them has
}

} // namespace bench
