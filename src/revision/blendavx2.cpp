#include "revision/blend.h"

// 16-bit runs are blended without divisions, which are what takes their time otherwise.
//
// A quotient x / n is computed as x * high + x * low, where high + low is 1 / n to twice a float's
// precision, with one rounding at the end (a fused multiply-add). That is the correctly rounded
// quotient, for every float x and every n below 2^16:
//  - The sum before its rounding is off by less than 2^-46 of the quotient: 2^-48 each from
//    rounding low and from rounding x * low, and what the double that low comes from lacks.
//  - The rounding would differ from that of the exact quotient only if a point midway between two
//    floats, k * 2^j with an odd k of 25 bits, lay between the two or were the quotient. Scaled to
//    integers, the quotient and such a point differ by a whole multiple of 2^j / n, which is 2^-41
//    of the quotient or more, or not at all; and they are never equal, since n * k has more
//    significant bits than a float x.
//
// Layered runs are as short as a pixel: there the divisions cost less than 1 / n does.

#if defined(__x86_64__) && defined(__GNUC__)

#define SEAMREVISION_AVX2 __attribute__((target("avx2,fma")))

namespace seamrevision
{

namespace
{

/// Up to this width the product of a 16-bit value and a position fits 31 bits.
constexpr qint32 widthLimit16 = 1 << 15;
/// In narrower strips the sum of two 32-bit quotients may be more than an int holds.
constexpr qint32 leastWidth32 = 3;

/// 1 / n as the sum of two floats.
struct Reciprocal
{
    explicit Reciprocal(qint32 n)
        : high(1.0F / static_cast<float>(n))
        , low(static_cast<float>(1.0 / n - static_cast<double>(high)))
    {
    }

    SEAMREVISION_AVX2 float times(float x) const { return __builtin_fmaf(x, high, x * low); }

    const float high;
    const float low;
};

/// The ramp of two 16-bit values. Their products with a position do not wrap, so it makes no
/// difference whether they are rounded to floats as integers or as products of floats.
SEAMREVISION_AVX2 quint16 ramp16(quint16 a, quint16 b, float toNext, float position,
                                 const Reciprocal &oneByWidth)
{
    const float t1 = oneByWidth.times(toNext * static_cast<float>(a));
    const float t2 = oneByWidth.times(position * static_cast<float>(b));
    return static_cast<quint16>(static_cast<qint32>(t1 + t2));
}

SEAMREVISION_AVX2 void avx2Level16(quint16 *current, quint16 *next, std::size_t valueCount,
                                   qint32 position, qint32 width)
{
    if (width > widthLimit16) {
        plainBlend().level16(current, next, valueCount, position, width);
        return;
    }
    const Reciprocal oneByWidth(width);
    const auto p = static_cast<float>(position);
    const float toNext = static_cast<float>(width) - p;
    for (std::size_t i = 0; i < valueCount; ++i)
        current[i] = next[i] = ramp16(current[i], next[i], toNext, p, oneByWidth);
}

SEAMREVISION_AVX2 void avx2Ramp16(quint16 *current, quint16 *next, std::size_t valueCount,
                                  const qint32 *positions, qint32 width)
{
    if (width > widthLimit16) {
        plainBlend().ramp16(current, next, valueCount, positions, width);
        return;
    }
    const Reciprocal oneByWidth(width);
    const auto n = static_cast<float>(width);
    for (std::size_t i = 0; i < valueCount; ++i) {
        const auto p = static_cast<float>(positions[i]);
        current[i] = next[i] = ramp16(current[i], next[i], n - p, p, oneByWidth);
    }
}

SEAMREVISION_AVX2 void avx2Level32(qint32 *current, qint32 *next, std::size_t valueCount,
                                   qint32 position, qint32 width)
{
    if (width < leastWidth32) {
        plainBlend().level32(current, next, valueCount, position, width);
        return;
    }
    const auto n = static_cast<float>(width);
    const auto p = static_cast<quint32>(position);
    const quint32 toNext = static_cast<quint32>(width) - p;
    for (std::size_t i = 0; i < valueCount; ++i) {
        const auto x1 = static_cast<qint32>(toNext * static_cast<quint32>(current[i]));
        const auto x2 = static_cast<qint32>(p * static_cast<quint32>(next[i]));
        const float sum = static_cast<float>(x1) / n + static_cast<float>(x2) / n;
        current[i] = next[i] = static_cast<qint32>(sum);
    }
}

} // namespace

const BlendVersion *avx2Blend()
{
    static constexpr BlendVersion version{avx2Level16, avx2Ramp16, avx2Level32};
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") ? &version : nullptr;
}

} // namespace seamrevision

#else

namespace seamrevision
{

const BlendVersion *avx2Blend()
{
    return nullptr;
}

} // namespace seamrevision

#endif
