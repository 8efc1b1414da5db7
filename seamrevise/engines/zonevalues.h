#pragma once

#include "engines/neutrallayer.h"
#include "numbers/luminance.h"

#include <seamrevision/coefszoneinfo.h>
#include <seamrevision/multilayercoefzoneinfo.h>

#include <limits>

namespace seamrevise
{

/// How the values of a pixel lie in a single-layer zone, and what they mean.
class MatrixValues
{
public:
    using Zone = CoefsZoneInfo;
    using Value = unsigned short;
    static constexpr bool isPacked = false;
    static constexpr int neutral = 2048;
    /// The largest value in the result's table; files hold larger ones.
    static constexpr int cap = 2457;
    static constexpr Value largest = std::numeric_limits<Value>::max();

    std::size_t perPixel() const { return 9; }
    const Value *pixel(const Zone &zone, std::size_t index) const
    {
        return zone.m_arrayData.data() + index * perPixel();
    }
    /// Calls visit(values, pixelCount) for pixels of a row, as many at once as lie together.
    template <typename Visit>
    void forEachRun(const Zone &zone, std::size_t first, std::size_t count, Visit visit) const
    {
        visit(pixel(zone, first), count);
    }
    double luminance(const Value *values, const LuminanceWeights &weights, int highest) const
    {
        return matrixLuminance(values, weights, highest);
    }
    static bool isSaturatedCode(Value) { return false; }
};

/// The same of a layered zone.
class LayerValues
{
public:
    using Zone = MultiLayerCoefZoneInfo;
    using Value = int;
    static constexpr bool isPacked = true;
    static constexpr int neutral = neutralLayer;
    static constexpr int cap = 4096;
    static constexpr Value largest = std::numeric_limits<Value>::max();

    explicit LayerValues(int layerCount)
        : m_perPixel(static_cast<std::size_t>(layerCount) * 3)
    {
    }

    std::size_t perPixel() const { return m_perPixel; }
    const Value *pixel(const Zone &zone, std::size_t index) const
    {
        return zone.m_multiLayerCoefs[index].data();
    }
    template <typename Visit>
    void forEachRun(const Zone &zone, std::size_t first, std::size_t count, Visit visit) const
    {
        for (std::size_t index = first; index < first + count; ++index)
            visit(pixel(zone, index), 1);
    }
    double luminance(const Value *values, const LuminanceWeights &weights, int highest) const
    {
        return layeredLuminance(values, m_perPixel, weights, highest);
    }
    /// Whether the packed code of a value, (value - 512) / 2, is 0 or 1023.
    static bool isSaturatedCode(Value value) { return value < 514 || value >= 2558; }

private:
    std::size_t m_perPixel;
};

} // namespace seamrevise
