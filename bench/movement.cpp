#include "movement.h"

#include "records/pixelmath.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>

namespace bench
{

namespace
{

/// Writes the codes of a row, three to a word.
void packRow(const std::vector<int> &row, unsigned char *place)
{
    for (std::size_t k = 0; k < row.size(); k += 3) {
        quint32 word = 0;
        for (std::size_t c = 0; c < 3; ++c)
            word |= static_cast<quint32>(std::clamp(row[k + c], 512, 2559) - 512) / 2 << (10 * c);
        std::memcpy(place, &word, sizeof word);
        place += sizeof word;
    }
}

/// Calls visit(firstPixelOfZone, firstPixelOfScreen, pixelCount) for one of a partition's own rows.
template <typename Visit>
void visitOwnRow(const Wall &wall, int number, int row, Visit visit)
{
    const AreaInfoBase &own = wall.partition(number);
    const ZoneBaseInfo zone = wall.extended(number);
    const auto inZone = (row - zone.getBegPixRow()) * seamrevision::zoneWidth(zone)
        + own.getAreaStartCol() - zone.getBegPixCol();
    const int inScreen = row * wall.screen().width() + own.getAreaStartCol();
    visit(static_cast<std::size_t>(inZone), static_cast<std::size_t>(inScreen),
          static_cast<std::size_t>(seamrevision::areaWidth(own)));
}

} // namespace

void moveSingleLayer(const Wall &wall, const MemoryDatabase &database)
{
    std::vector<unsigned short> scratch;
    for (const auto &entry : database.stored) {
        scratch = entry.second.m_arrayData;
        benchmark::DoNotOptimize(scratch.data());
        benchmark::ClobberMemory();
    }
    std::vector<unsigned short> table;
    table.reserve(wall.pixelCount() * 9);
    const auto append = [&](int number, int row) {
        visitOwnRow(wall, number, row, [&](std::size_t first, std::size_t, std::size_t pixels) {
            const auto from = database.stored.at(number).m_arrayData.begin()
                + static_cast<std::ptrdiff_t>(first * 9);
            const auto old = static_cast<std::ptrdiff_t>(table.size());
            table.insert(table.end(), from, from + static_cast<std::ptrdiff_t>(pixels * 9));
            for (auto value = table.begin() + old; value != table.end(); ++value)
                *value = std::min<unsigned short>(*value, 0x999);
        });
    };
    for (int row = 0, first = 1; row <= wall.screen().bottom(); ++row) {
        if (row > wall.partition(first).getAreaEndRow())
            first += gridColumns;
        for (int number = first; number < first + gridColumns; ++number)
            append(number, row);
    }
    benchmark::DoNotOptimize(table.data());
    benchmark::ClobberMemory();
}

void moveLayered(const Wall &wall, const MemoryDatabase &database)
{
    using Table = std::vector<std::vector<int>>;
    constexpr std::size_t packedPixel = 4 * layerCount;
    Table zone;
    Table table(wall.pixelCount());
    std::vector<unsigned char> packed(wall.pixelCount() * packedPixel);
    for (const auto &[number, stored] : database.stored) {
        database.fillRows(stored.m_multiLayerCoefs, zone);
        const auto take = [&](std::size_t from, std::size_t to, std::size_t pixels) {
            for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
                std::vector<int> &row = table[to + pixel];
                if (database.replacesRows())
                    row.swap(zone[from + pixel]);
                else
                    row = zone[from + pixel];
                for (int &value : row)
                    value = std::min(value, 4096);
                packRow(row, packed.data() + (to + pixel) * packedPixel);
            }
        };
        const AreaInfoBase &own = wall.partition(number);
        for (int row = own.getAreaStartRow(); row <= own.getAreaEndRow(); ++row)
            visitOwnRow(wall, number, row, take);
    }
    benchmark::DoNotOptimize(table.data());
    benchmark::DoNotOptimize(packed.data());
    benchmark::ClobberMemory();
}

} // namespace bench
