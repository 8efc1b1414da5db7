#pragma once

#include <QString>

#include <algorithm>
#include <cstddef>
#include <vector>

/// The layout of layered coefficients: see MultiLayerCoefZoneInfo.
namespace seamrevision
{

/// A row a pixel.
using CoefTable = std::vector<std::vector<int>>;

constexpr int neutralCoef = 4096;
/// The largest value that the whole-screen table may hold after saving.
constexpr int layeredCap = 4096;

/// Values that make one word of the packed form.
constexpr std::size_t valuesPerWord = 3;

inline const QString tableSuffix = QStringLiteral("_m");    ///< part of the file format
inline const QString packedSuffix = QStringLiteral("_zip"); ///< part of the file format

inline void capRow(std::vector<int> &row)
{
    for (int &value : row)
        value = std::min(value, layeredCap);
}

} // namespace seamrevision
