#include "multilayer/packing.h"

#include "records/pixelmath.h"

#include <QtEndian>

#include <algorithm>

namespace seamrevision
{

namespace
{

constexpr std::size_t valuesPerWord = 3;
constexpr std::size_t wordBytes = sizeof(quint32);

quint32 code(int value)
{
    return static_cast<quint32>((std::clamp(value, 512, 2559) - 512) / 2);
}

quint32 packedWord(const int *values)
{
    return code(values[0]) | code(values[1]) << 10 | code(values[2]) << 20;
}

/// Packs one pixel into the byteCount bytes that the output has left for it.
void packPixel(const std::vector<int> &row, unsigned char *bytes, std::size_t byteCount)
{
    std::size_t offset = 0;
    for (std::size_t word = 0; word < row.size() / valuesPerWord && offset < byteCount; ++word) {
        unsigned char littleEndian[wordBytes];
        qToLittleEndian(packedWord(row.data() + word * valuesPerWord), littleEndian);
        std::copy_n(littleEndian, std::min(wordBytes, byteCount - offset), bytes + offset);
        offset += wordBytes;
    }
}

} // namespace

ST_LedZoneInfo ledZoneInfo(const ZoneBaseInfo &zone)
{
    return {zone.getAreaID(), zone.getBegPixRow(), zone.getBegPixCol(), zone.getEndPixRow(),
            zone.getEndPixCol()};
}

ST_LedZoneInfo ledZoneInfo(const NQRect &screen)
{
    return {QString(), screen.top(), screen.left(), screen.bottom(), screen.right()};
}

void packCoefs(const ST_LedZoneInfo &zone, const std::vector<std::vector<int>> &table,
               unsigned int packedWidth, int layerCount, std::vector<unsigned char> &packed)
{
    const auto layers = static_cast<std::size_t>(std::max(0, layerCount));
    const auto columns = static_cast<std::size_t>(sideLength(zone.begPixCol, zone.endPixCol));
    const auto rows = static_cast<std::size_t>(sideLength(zone.begPixRow, zone.endPixRow));
    packed.assign(columns * rows * packedWidth * layers, 0);
    std::size_t offset = 0;
    for (const std::vector<int> &row : table) {
        if (offset >= packed.size())
            break;
        const std::size_t pixelBytes = row.size() / valuesPerWord * packedWidth;
        packPixel(row, packed.data() + offset, std::min(pixelBytes, packed.size() - offset));
        offset += pixelBytes;
    }
}

} // namespace seamrevision
