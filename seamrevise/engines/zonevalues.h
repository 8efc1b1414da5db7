#pragma once

#include "engines/neutrallayer.h"
#include "numbers/luminance.h"

#include <seamrevision/coefszoneinfo.h>
#include <seamrevision/multilayercoefzoneinfo.h>
#include <seamrevision/nqrect.h>

#include <algorithm>
#include <limits>

namespace seamrevise
{

/// First and last screen column and row.
inline NQRect rectOf(const ZoneBaseInfo &zone)
{
    return NQRect(zone.getBegPixCol(), zone.getBegPixRow(), zone.getEndPixCol(),
                  zone.getEndPixRow());
}

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

    /// Values that change nothing, of one pixel.
    std::vector<Value> neutralPixel() const
    {
        return {neutral, 0, 0, 0, neutral, 0, 0, 0, neutral};
    }
    /// What is delivered of a pixel, as many values as the file's format has.
    void deliver(const Value *values, int highest, std::vector<qint32> &delivered) const
    {
        std::transform(values, values + perPixel(), delivered.begin(),
                       [highest](Value value) { return std::min<qint32>(value, highest); });
    }
    /// All values of a zone as they are stored.
    static const std::vector<Value> &stored(const Zone &zone) { return zone.m_arrayData; }
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

    std::vector<Value> neutralPixel() const { return std::vector<Value>(m_perPixel, neutral); }
    /// The values themselves or, of a format with one number a layer, their packed words.
    void deliver(const Value *values, int highest, std::vector<qint32> &delivered) const
    {
        const bool isPackedFormat = delivered.size() < m_perPixel;
        for (qint32 &number : delivered) {
            number = isPackedFormat ? packedWord(values) : std::min(*values, highest);
            values += isPackedFormat ? 3 : 1;
        }
    }
    static const std::vector<std::vector<Value>> &stored(const Zone &zone)
    {
        return zone.m_multiLayerCoefs;
    }

private:
    /// The codes of red, green and blue, 10 bits each, from the lowest. Part of the file format.
    static qint32 packedWord(const Value *layer)
    {
        const auto code
            = [](Value value) { return std::min((std::clamp(value, 512, 2560) - 512) / 2, 1023); };
        return code(layer[0]) | code(layer[1]) << 10 | code(layer[2]) << 20;
    }

    std::size_t m_perPixel;
};

} // namespace seamrevise
