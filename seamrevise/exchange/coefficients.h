#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace seamrevise
{

/// Most layers that coefficients have.
constexpr int mostLayers = 64;

/// The gain 1 of a coefficient.
constexpr double neutralGain(int layerCount)
{
    return layerCount == 0 ? 2048.0 : 4096.0;
}

/// Values a pixel: nine of a single layer, three of each of several.
constexpr int valuesPerPixel(int layerCount)
{
    return layerCount == 0 ? 9 : 3 * layerCount;
}

/// Whether so many values a pixel may be layers.
constexpr bool isLayeredCount(qint64 pixelValues)
{
    return pixelValues > 0 && pixelValues % 3 == 0 && pixelValues / 3 <= mostLayers;
}

/// The coefficients of a rectangle, pixels row by row.
struct Coefficients
{
    int layerCount = 0;                 ///< 0: single layer
    std::vector<unsigned short> single; ///< nine values a pixel, or none
    std::vector<qint32> layered;        ///< 3 * layerCount values a pixel, or none
};

/// What a file of coefficients must hold.
struct WantedCoefficients
{
    qint64 rows = 0;
    qint64 columns = 0;
    std::optional<int> layerCount; ///< 0: single layer; none: what the file has
};

/// "coefficients with a layer count of 2".
QString kindText(int layerCount);

/// What a file of another kind than wanted holds.
QString otherKindText(int held, int wanted);

} // namespace seamrevise
