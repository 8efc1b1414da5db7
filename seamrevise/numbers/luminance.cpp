#include "numbers/luminance.h"

#include <algorithm>

namespace seamrevise
{

namespace
{

constexpr double layerUnit = 4096.0;

} // namespace

double layeredLuminance(const int *values, std::size_t valueCount, const LuminanceWeights &weights,
                        int cap)
{
    double sums[3] = {};
    for (std::size_t i = 0; i < valueCount; i += 3) {
        for (std::size_t colour = 0; colour < 3; ++colour)
            sums[colour] += std::min(values[i + colour], cap);
    }
    const double layerCount = static_cast<double>(valueCount) / 3.0;
    return (weights[0] * sums[0] + weights[1] * sums[1] + weights[2] * sums[2]) / layerCount
        / layerUnit;
}

} // namespace seamrevise
