#pragma once

#include "multilayer/coefs.h"
#include "seamrevision/ledzoneinfo.h"
#include "seamrevision/nqrect.h"
#include "seamrevision/zonebaseinfo.h"

#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace seamrevision
{

/// The rectangle of a zone, or of the screen, that a packed block covers.
ST_LedZoneInfo ledZoneInfo(const ZoneBaseInfo &zone);
ST_LedZoneInfo ledZoneInfo(const NQRect &screen);

/// The word of three values, as a number; see packCoefs().
inline quint32 packedWord(const int *values)
{
    const auto code
        = [](int value) { return static_cast<quint32>(std::clamp(value, 512, 2559) - 512) / 2; };
    return code(values[0]) | code(values[1]) << 10 | code(values[2]) << 20;
}

/// Packs a table of layered coefficients, one row a pixel, into 10-bit codes.
///
/// Each three values of a row make one 32-bit word: code(0) | code(1) << 10 | code(2) << 20, where
/// the code of a value is (value - 512) / 2, 0 from 512 down and 1023 from 2558 up. The words of a
/// pixel are stored little-endian, 4 bytes apart. Part of the file format.
///
/// A pixel takes as many times packedWidth bytes as it has words, so only a width of 4 is
/// consistent; words are cut where their pixel ends. The output gets packedWidth * layerCount bytes
/// for every pixel of the zone's rectangle, 0 where the table has no row; nothing is written
/// outside it.
void packCoefs(const ST_LedZoneInfo &zone, const CoefTable &table, unsigned int packedWidth,
               int layerCount, std::vector<unsigned char> &packed);

} // namespace seamrevision
