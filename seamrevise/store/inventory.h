#pragma once

#include "store/screenlayout.h"

#include <vector>

namespace seamrevise
{

/// The largest zone that one database value holds, in bytes.
constexpr qint64 largestZoneBytes = 999'000'000;

/// Bytes that a pixel takes in the store; layer count 0 is single layer.
constexpr qint64 storedPixelBytes(qint64 layerCount)
{
    return layerCount == 0 ? qint64{9} * 2 : layerCount * 3 * 4;
}

/// What a screen database says that it holds, row by row and without judging it. The coefficients
/// themselves are not read.
struct StoredInventory
{
    struct Coefficients
    {
        int number = 0;     ///< the partition's
        int layerCount = 0; ///< 0: single layer
        NQRect rect;
        qint64 bytes = 0; ///< 0 also where the value is not one of bytes
    };

    int screenRows = 0;                     ///< rows of the table screen
    std::vector<StoredZone> partitions;     ///< by number, also where one is there twice
    std::vector<Coefficients> coefficients; ///< by layer count and number, likewise
};

} // namespace seamrevise
