#include "revision/blend.h"

#include <cfloat>
#include <limits>

// The bits of the result are fixed: quotients and sum must be rounded to single precision at every
// step. The build also passes -ffp-contract=off, so that no multiply-add skips a rounding.
static_assert(FLT_EVAL_METHOD == 0, "floats must be evaluated in their own precision");

namespace seamrevision
{

namespace
{

/// Product modulo 2^32, without the undefined behaviour of a signed overflow.
qint32 wrappedProduct(qint32 a, qint32 b)
{
    return static_cast<qint32>(static_cast<quint32>(a) * static_cast<quint32>(b));
}

qint32 truncated(float value)
{
    // Both bounds are powers of two and exact as floats.
    return value >= -2147483648.0F && value < 2147483648.0F ? static_cast<qint32>(value)
                                                            : std::numeric_limits<qint32>::min();
}

/// The ramp at one position of a strip.
template <typename Value>
Value ramp(Value a, Value b, qint32 position, qint32 width)
{
    const auto n = static_cast<float>(width);
    const float t1 = static_cast<float>(wrappedProduct(width - position, a)) / n;
    const float t2 = static_cast<float>(wrappedProduct(position, b)) / n;
    return static_cast<Value>(truncated(t1 + t2));
}

template <typename Value>
void plainLevel(Value *current, Value *next, std::size_t valueCount, qint32 position, qint32 width)
{
    for (std::size_t i = 0; i < valueCount; ++i)
        current[i] = next[i] = ramp(current[i], next[i], position, width);
}

void plainRamp(quint16 *current, quint16 *next, std::size_t valueCount, const qint32 *positions,
               qint32 width)
{
    for (std::size_t i = 0; i < valueCount; ++i)
        current[i] = next[i] = ramp(current[i], next[i], positions[i], width);
}

/// The quickest version for this processor.
const BlendVersion &chosenBlend()
{
    static const BlendVersion &chosen = avx2Blend() ? *avx2Blend() : plainBlend();
    return chosen;
}

} // namespace

const BlendVersion &plainBlend()
{
    static constexpr BlendVersion version{plainLevel<quint16>, plainRamp, plainLevel<qint32>};
    return version;
}

void blendLevel(quint16 *current, quint16 *next, std::size_t valueCount, qint32 position,
                qint32 width)
{
    chosenBlend().level16(current, next, valueCount, position, width);
}

void blendRamp(quint16 *current, quint16 *next, std::size_t valueCount, const qint32 *positions,
               qint32 width)
{
    chosenBlend().ramp16(current, next, valueCount, positions, width);
}

void blendLevel(qint32 *current, qint32 *next, std::size_t valueCount, qint32 position,
                qint32 width)
{
    chosenBlend().level32(current, next, valueCount, position, width);
}

} // namespace seamrevision
