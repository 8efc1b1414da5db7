#include "numbers/primarygains.h"

#include <algorithm>

namespace seamrevise
{

namespace
{

/// The gain of every step-th value from the first on.
template <typename Value>
PrimaryGain gainOf(const std::vector<Value> &values, std::size_t first, std::size_t step,
                   double neutral)
{
    Value least = values.at(first);
    Value most = least;
    qint64 sum = 0; // of fewer values than 2^32: no zone has more
    std::size_t count = 0;
    for (std::size_t i = first; i < values.size(); i += step) {
        least = std::min(least, values[i]);
        most = std::max(most, values[i]);
        sum += values[i];
        ++count;
    }
    return {static_cast<double>(sum) / static_cast<double>(count) / neutral, least / neutral,
            most / neutral};
}

} // namespace

std::array<PrimaryGain, 3> primaryGains(const std::vector<unsigned short> &matrices)
{
    return {gainOf(matrices, 0, 9, 2048.0), gainOf(matrices, 4, 9, 2048.0),
            gainOf(matrices, 8, 9, 2048.0)};
}

std::array<PrimaryGain, 3> primaryGains(const std::vector<qint32> &layers)
{
    return {gainOf(layers, 0, 3, 4096.0), gainOf(layers, 1, 3, 4096.0),
            gainOf(layers, 2, 3, 4096.0)};
}

} // namespace seamrevise
