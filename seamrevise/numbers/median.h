#pragma once

#include <algorithm>
#include <optional>
#include <vector>

namespace seamrevise
{

/// The middle value, of an even count the mean of the middle two; none of no values. Changes their
/// order.
inline std::optional<double> median(std::vector<double> &values)
{
    if (values.empty())
        return {};
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 != 0)
        return *middle;
    return (*std::max_element(values.begin(), middle) + *middle) / 2.0;
}

} // namespace seamrevise
