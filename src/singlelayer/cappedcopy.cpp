#include "singlelayer/cappedcopy.h"

#include "singlelayer/coefs.h"

#include <algorithm>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace seamrevision
{

void copyCappedPlainly(const unsigned short *values, std::size_t count, unsigned short *target)
{
    std::transform(values, values + count, target,
                   [](unsigned short value) { return std::min(value, coefficientCap); });
}

#ifdef __SSE2__

void copyCapped(const unsigned short *values, std::size_t count, unsigned short *target)
{
    constexpr std::size_t valuesPerVector = sizeof(__m128i) / sizeof *target;
    const std::size_t misplaced = reinterpret_cast<std::uintptr_t>(target) / sizeof *target;
    const std::size_t before = std::min(count, -misplaced % valuesPerVector);
    copyCappedPlainly(values, before, target);
    std::size_t done = before;
    for (; done + valuesPerVector <= count; done += valuesPerVector) {
        const __m128i vector = _mm_loadu_si128(reinterpret_cast<const __m128i *>(values + done));
        const __m128i excess = _mm_subs_epu16(vector, _mm_set1_epi16(coefficientCap));
        _mm_stream_si128(reinterpret_cast<__m128i *>(target + done), _mm_sub_epi16(vector, excess));
    }
    _mm_sfence(); // so that other threads find the values when this one says that they are there
    copyCappedPlainly(values + done, count - done, target + done);
}

#else

void copyCapped(const unsigned short *values, std::size_t count, unsigned short *target)
{
    copyCappedPlainly(values, count, target);
}

#endif

} // namespace seamrevision
