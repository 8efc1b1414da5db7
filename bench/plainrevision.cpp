#include "plainrevision.h"

#include <algorithm>
#include <cstdint>

namespace bench
{

namespace
{

/// A zone of any kind: value k of a pixel of the screen.
template <typename Value, typename At>
void blendSeam(ZoneBaseInfo current, ZoneBaseInfo next, bool horizontal, std::size_t values, At at)
{
    const int width = horizontal ? current.getEndPixCol() - next.getBegPixCol() + 1
                                 : current.getEndPixRow() - next.getBegPixRow() + 1;
    const int top = horizontal ? current.getBegPixRow() : next.getBegPixRow();
    const int left = horizontal ? next.getBegPixCol() : current.getBegPixCol();
    for (int row = top; row <= current.getEndPixRow(); ++row) {
        for (int col = left; col <= current.getEndPixCol(); ++col) {
            const int position = horizontal ? col - left : row - top;
            for (std::size_t k = 0; k < values; ++k) {
                Value &a = at(0, row, col, k);
                Value &b = at(1, row, col, k);
                a = b = static_cast<Value>(plainRamp(a, b, position, width));
            }
        }
    }
}

/// Blends every seam of a wall in place; valueAt(zone, pixel, k) is a value of a zone.
template <typename Value, typename ValueAt>
void blendSeams(std::map<int, MultiLayerCoefZoneInfo> &zones, std::size_t values, ValueAt valueAt)
{
    const auto blend = [&](int number, int nextNumber, bool horizontal) {
        MultiLayerCoefZoneInfo *pair[] = {&zones.at(number), &zones.at(nextNumber)};
        blendSeam<Value>(*pair[0], *pair[1], horizontal, values,
                         [&](int which, int row, int col, std::size_t k) -> Value & {
                             MultiLayerCoefZoneInfo &zone = *pair[which];
                             const int zoneWidth = zone.getEndPixCol() - zone.getBegPixCol() + 1;
                             const int pixel = (row - zone.getBegPixRow()) * zoneWidth + col
                                 - zone.getBegPixCol();
                             return valueAt(zone, static_cast<std::size_t>(pixel), k);
                         });
    };
    for (int row = 0; row < gridRows; ++row) {
        for (int col = 1; col < gridColumns; ++col)
            blend(row * gridColumns + col, row * gridColumns + col + 1, true);
    }
    for (int col = 1; col <= gridColumns; ++col) {
        for (int row = 0; row < gridRows - 1; ++row)
            blend(row * gridColumns + col, (row + 1) * gridColumns + col, false);
    }
}

/// Whether same(zone, pixelOfZone, pixelOfScreen) for every pixel of every partition.
template <typename Same>
bool isEveryPixel(const Wall &wall, const std::map<int, MultiLayerCoefZoneInfo> &zones, Same same)
{
    for (const auto &[number, zone] : zones) {
        const AreaInfoBase &own = wall.partition(number);
        const int zoneWidth = zone.getEndPixCol() - zone.getBegPixCol() + 1;
        for (int row = own.getAreaStartRow(); row <= own.getAreaEndRow(); ++row) {
            for (int col = own.getAreaStartCol(); col <= own.getAreaEndCol(); ++col) {
                const int pixel
                    = (row - zone.getBegPixRow()) * zoneWidth + col - zone.getBegPixCol();
                const int screenPixel = row * wall.screen().width() + col;
                if (!same(zone, static_cast<std::size_t>(pixel),
                          static_cast<std::size_t>(screenPixel)))
                    return false;
            }
        }
    }
    return true;
}

unsigned char packedByte(const std::vector<int> &row, std::size_t byte)
{
    std::uint32_t word = 0;
    for (std::size_t k = 0; k < 3; ++k) {
        const int code = (std::clamp(row[byte / 4 * 3 + k], 512, 2559) - 512) / 2;
        word |= static_cast<std::uint32_t>(code) << (10 * k);
    }
    return static_cast<unsigned char>(word >> (8 * (byte % 4)));
}

} // namespace

int plainRamp(int a, int b, int position, int width)
{
    const auto product = [](int x, int y) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(x)
                                         * static_cast<std::uint32_t>(y));
    };
    const float t1 = static_cast<float>(product(width - position, a)) / static_cast<float>(width);
    const float t2 = static_cast<float>(product(position, b)) / static_cast<float>(width);
    return static_cast<int>(t1 + t2);
}

bool isPlainSingleLayer(const Wall &wall, const MemoryDatabase &database,
                        const ST_ReviseResult &result)
{
    if (result.isSuccess != 1 || result.coefData.size() != wall.pixelCount() * 9)
        return false;
    auto zones = database.stored;
    blendSeams<unsigned short>(
        zones, 9,
        [](MultiLayerCoefZoneInfo &zone, std::size_t pixel, std::size_t k) -> unsigned short & {
            return zone.m_arrayData[pixel * 9 + k];
        });
    return isEveryPixel(
        wall, zones,
        [&](const MultiLayerCoefZoneInfo &zone, std::size_t pixel, std::size_t screenPixel) {
            for (std::size_t k = 0; k < 9; ++k) {
                const int value = zone.m_arrayData[pixel * 9 + k];
                if (result.coefData[screenPixel * 9 + k] != std::min(value, 0x999))
                    return false;
            }
            return true;
        });
}

bool isPlainLayered(const Wall &wall, const MemoryDatabase &database, const ST_ReviseResult &result)
{
    constexpr std::size_t packedBytes = 4 * layerCount;
    if (result.isSuccess != 1 || result.multiLayerCoefData.size() != wall.pixelCount()
        || result.zipCoefData.size() != wall.pixelCount() * packedBytes)
        return false;
    auto zones = database.stored;
    blendSeams<int>(zones, valuesPerLayeredPixel,
                    [](MultiLayerCoefZoneInfo &zone, std::size_t pixel, std::size_t k) -> int & {
                        return zone.m_multiLayerCoefs[pixel][k];
                    });
    return isEveryPixel(
        wall, zones,
        [&](const MultiLayerCoefZoneInfo &zone, std::size_t pixel, std::size_t screenPixel) {
            std::vector<int> row = zone.m_multiLayerCoefs[pixel];
            for (int &value : row)
                value = std::min(value, 4096);
            for (std::size_t byte = 0; byte < packedBytes; ++byte) {
                if (result.zipCoefData[screenPixel * packedBytes + byte] != packedByte(row, byte))
                    return false;
            }
            return result.multiLayerCoefData[screenPixel] == row;
        });
}

} // namespace bench
