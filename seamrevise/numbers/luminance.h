#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

/// The white luminance that coefficients give a pixel, relative to gain 1.
namespace seamrevise
{

/// What red, green and blue add to white; they sum to 1.
using LuminanceWeights = std::array<double, 3>;

constexpr LuminanceWeights usualWeights{0.2126, 0.7152, 0.0722};

/// Larger values count as the cap.
constexpr int noCap = std::numeric_limits<int>::max();

/// Of a 3x3 matrix in which 2048 is gain 1: each row is what one primary gets for white.
inline double matrixLuminance(const unsigned short *matrix, const LuminanceWeights &weights,
                              int cap = noCap)
{
    double sum = 0.0;
    for (std::size_t row = 0; row < 3; ++row) {
        int rowSum = 0;
        for (std::size_t col = 0; col < 3; ++col)
            rowSum += std::min<int>(matrix[row * 3 + col], cap);
        sum += weights[row] * rowSum;
    }
    return sum / 2048.0;
}

/// Of layers of red, green and blue in which 4096 is gain 1: of each colour the mean of its layers.
double layeredLuminance(const int *values, std::size_t valueCount, const LuminanceWeights &weights,
                        int cap = noCap);

} // namespace seamrevise
