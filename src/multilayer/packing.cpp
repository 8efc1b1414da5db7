#include "multilayer/packing.h"

#include "records/pixelmath.h"

#include <QtEndian>

#include <algorithm>

namespace seamrevision
{

namespace
{

constexpr std::size_t wordBytes = sizeof(quint32);

/// Packs a pixel into the bytes from offset to end.
void packRow(const std::vector<int> &row, unsigned char *packed, std::size_t offset,
             std::size_t end)
{
    const std::size_t wordCount = row.size() / valuesPerWord;
    const int *values = row.data();
    for (std::size_t word = 0; word < wordCount && offset < end; ++word) {
        unsigned char littleEndian[wordBytes];
        qToLittleEndian(packedWord(values), littleEndian);
        if (offset + wordBytes <= end)
            std::copy_n(littleEndian, wordBytes, packed + offset);
        else
            std::copy_n(littleEndian, end - offset, packed + offset);
        offset += wordBytes;
        values += valuesPerWord;
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

void packCoefs(const ST_LedZoneInfo &zone, const CoefTable &table, unsigned int packedWidth,
               int layerCount, std::vector<unsigned char> &packed)
{
    const auto layers = static_cast<std::size_t>(std::max(0, layerCount));
    const auto columns = static_cast<std::size_t>(sideLength(zone.begPixCol, zone.endPixCol));
    const auto rows = static_cast<std::size_t>(sideLength(zone.begPixRow, zone.endPixRow));
    packed.assign(columns * rows * packedWidth * layers, 0);
    std::size_t offset = 0;
    for (const std::vector<int> &row : table) {
        const std::size_t rowBytes = row.size() / valuesPerWord * packedWidth;
        const std::size_t end = std::min(offset + rowBytes, packed.size());
        packRow(row, packed.data(), offset, end);
        offset = end;
    }
}

} // namespace seamrevision
