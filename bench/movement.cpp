#include "movement.h"

#include "records/pixelmath.h"

#include <benchmark/benchmark.h>

#include <algorithm>

namespace bench
{

namespace
{

/// Calls copy(firstPixelOfZone, firstPixelOfScreen, pixelCount) for each of a partition's own rows.
template <typename Copy>
void forEachOwnRow(const Wall &wall, int number, Copy copy)
{
    const AreaInfoBase &own = wall.partition(number);
    const ZoneBaseInfo zone = wall.extended(number);
    const auto zoneWidth = static_cast<std::size_t>(seamrevision::zoneWidth(zone));
    const auto screenWidth = static_cast<std::size_t>(wall.screen().width());
    const auto left = static_cast<std::size_t>(own.getAreaStartCol() - zone.getBegPixCol());
    const auto count = static_cast<std::size_t>(seamrevision::areaWidth(own));
    for (int row = own.getAreaStartRow(); row <= own.getAreaEndRow(); ++row) {
        copy(static_cast<std::size_t>(row - zone.getBegPixRow()) * zoneWidth + left,
             static_cast<std::size_t>(row) * screenWidth
                 + static_cast<std::size_t>(own.getAreaStartCol()),
             count);
    }
}

} // namespace

void moveSingleLayer(const Wall &wall, const MemoryDatabase &database)
{
    std::vector<unsigned short> table(wall.pixelCount() * 9, 0);
    std::vector<unsigned short> scratch;
    std::vector<std::vector<unsigned short>> zones;
    zones.reserve(database.stored.size());
    for (const auto &entry : database.stored) {
        scratch = entry.second.m_arrayData;
        zones.push_back(scratch);
    }
    int number = 0;
    for (const std::vector<unsigned short> &zone : zones) {
        forEachOwnRow(wall, ++number, [&](std::size_t from, std::size_t to, std::size_t pixels) {
            std::copy_n(zone.data() + from * 9, pixels * 9, table.data() + to * 9);
        });
    }
    for (unsigned short &value : table)
        value = std::min<unsigned short>(value, 0x999);
    const std::vector<unsigned short> result = table;
    benchmark::DoNotOptimize(result.data());
    benchmark::ClobberMemory();
}

void moveLayered(const Wall &wall, const MemoryDatabase &database)
{
    using Table = std::vector<std::vector<int>>;
    const std::size_t packedBytes = wall.pixelCount() * 4 * layerCount;
    const std::vector<int> zeros(valuesPerLayeredPixel, 0);
    Table neutral(wall.pixelCount(), zeros);
    std::vector<unsigned char> neutralPacked(packedBytes, 0);
    Table table(wall.pixelCount(), zeros);
    std::vector<unsigned char> packed(packedBytes, 0);
    benchmark::DoNotOptimize(neutralPacked.data());
    benchmark::DoNotOptimize(packed.data());
    Table scratch;
    std::vector<Table> zones;
    zones.reserve(database.stored.size());
    for (const auto &entry : database.stored) {
        database.fillRows(entry.second.m_multiLayerCoefs, scratch);
        zones.push_back(scratch);
    }
    int number = 0;
    for (const Table &zone : zones) {
        forEachOwnRow(wall, ++number, [&](std::size_t from, std::size_t to, std::size_t pixels) {
            for (std::size_t pixel = 0; pixel < pixels; ++pixel)
                table[to + pixel] = zone[from + pixel];
        });
    }
    for (std::vector<int> &row : table) {
        for (int &value : row)
            value = std::min(value, 4096);
    }
    const Table result = table;
    const std::vector<unsigned char> resultPacked = packed;
    benchmark::DoNotOptimize(result.data());
    benchmark::DoNotOptimize(resultPacked.data());
    benchmark::ClobberMemory();
}

} // namespace bench
