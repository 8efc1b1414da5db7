#include "revision/blend.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <utility>
#include <vector>

using namespace seamrevision;

namespace
{

constexpr int intMin = std::numeric_limits<int>::min();
constexpr int intMax = std::numeric_limits<int>::max();

TEST(Blend, FollowsTheFormula)
{
    const struct
    {
        int a, b, width, firstPosition;
        std::vector<int> values;
    } rows[] = {
        {1000, 2000, 4, 0, {1000, 1250, 1500}},
        {4096, 4100, 6, 0, {4096, 4096, 4097, 4098, 4098, 4099}},
        {100, 200, 3, 0, {100, 133, 166}},
        {-5, 0, 4, 1, {-3, -2, -1}},
        {1 << 30, 0, 4, 0, {0, -(1 << 28), -(1 << 29), 1 << 28}}, // 2^31 and more wraps
        {intMax, 5, 1, 0, {intMin}}, // as a float 2^31, which no int holds
        {intMin, 5, 1, 0, {intMin}},
    };
    for (const BlendVersion *version : {&plainBlend(), avx2Blend()}) {
        for (const auto &row : rows) {
            int position = row.firstPosition;
            for (const int value : row.values) {
                std::vector<int> current(version ? 13 : 0, row.a);
                std::vector<int> next(current.size(), row.b);
                if (version)
                    version->level32(current.data(), next.data(), 13, position++, row.width);
                EXPECT_EQ(current, std::vector<int>(current.size(), value));
                EXPECT_EQ(next, current);
            }
        }
    }
}

TEST(Blend, EqualInputsComeBackEqualInStripsUnder257)
{
    // Value v is at position v % width, so that every position meets many values.
    std::vector<quint16> values(65536);
    std::vector<qint32> positions(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = static_cast<quint16>(i);
    for (int width = 1; width < 257; ++width) {
        for (std::size_t i = 0; i < values.size(); ++i)
            positions[i] = static_cast<qint32>(i) % width;
        std::vector<quint16> current = values;
        std::vector<quint16> next = values;
        blendRamp(current.data(), next.data(), values.size(), positions.data(), width);
        ASSERT_EQ(current, values) << width;
    }
}

/// Numbers of all sizes, every fourth from the edges of what a value holds.
template <typename Value>
std::vector<Value> noise(std::size_t count, std::mt19937 &random)
{
    const Value edges[]
        = {0, 1, std::numeric_limits<Value>::min(), std::numeric_limits<Value>::max()};
    std::vector<Value> values(count);
    for (Value &value : values)
        value = random() % 4 ? static_cast<Value>(random()) : edges[random() % 4];
    return values;
}

/// What a version makes of two runs from offset on; the same one twice if next is empty. Position
/// -1 stands for positions that differ from value to value.
template <typename Value>
auto blended(const BlendVersion &version, std::vector<Value> current, std::vector<Value> next,
             std::size_t offset, int position, int width)
{
    Value *const a = current.data() + offset;
    Value *const b = next.empty() ? a : next.data() + offset;
    const std::size_t count = current.size() - offset;
    std::vector<qint32> positions(count);
    for (std::size_t i = 0; i < count; ++i)
        positions[i] = static_cast<qint32>(i) * 7 % width;
    if constexpr (sizeof(Value) == sizeof(qint32))
        version.level32(a, b, count, std::max(0, position), width);
    else if (position >= 0)
        version.level16(a, b, count, position, width);
    else
        version.ramp16(a, b, count, positions.data(), width);
    return std::make_pair(current, next);
}

template <typename Value>
void compareVersions()
{
    const BlendVersion *const fast = avx2Blend();
    if (!fast)
        GTEST_SKIP() << "this processor has one version only";
    std::mt19937 random(1);
    std::vector<std::size_t> counts{31, 33, 64, 255, 256, 257, 513};
    for (std::size_t count = 0; count < 18; ++count)
        counts.push_back(count);
    for (const int width : {1, 2, 3, 6, 7, 32, 100, 257, 32768, 32769, 65535, 65536, intMax}) {
        for (std::size_t i = 0; i < 2 * counts.size(); ++i) {
            const auto current = noise<Value>(counts[i / 2] + i % 2, random);
            const auto other = noise<Value>(current.size(), random);
            for (int step = -1; step < std::min(width, 257); ++step) {
                const int position = step * std::max(1, width / 257);
                for (const auto &next : {other, std::vector<Value>()})
                    ASSERT_EQ(
                        blended(plainBlend(), current, next, i % 2, std::max(-1, position), width),
                        blended(*fast, current, next, i % 2, std::max(-1, position), width))
                        << counts[i / 2] << " values, position " << position << " of " << width;
            }
        }
    }
}

TEST(Blend, VersionsAgreeOn16Bits)
{
    compareVersions<quint16>();
}

TEST(Blend, VersionsAgreeOn32Bits)
{
    compareVersions<qint32>();
}

} // namespace
