#include "cipher/lanes.h"

#if defined(__x86_64__) && defined(__GNUC__)

#include <immintrin.h>

#include <cstring>
#include <utility>

#ifdef __clang__
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

namespace seamrevision::des::avx2
{
namespace
{

using Word = std::uint64_t __attribute__((vector_size(32)));

/// Shuffles stay within sixteen bytes, so that a word holds a table of sixteen entries twice.
inline Word shuffle(const std::uint8_t *twice, __m256i indexes)
{
    const __m256i table = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(twice));
    return reinterpret_cast<Word>(_mm256_shuffle_epi8(table, indexes));
}

/// A table of 16 or 64 bytes as lookUp() wants it: each row of sixteen twice, and as its difference
/// to the row before it.
template <std::size_t Count>
constexpr ByteTable<2 * Count> tableToLookUp(const ByteTable<Count> &table)
{
    ByteTable<2 * Count> rows{};
    for (std::size_t i = 0; i < Count; ++i) {
        const std::size_t place = i / 16 * 32 + i % 16;
        rows[place] = rows[place + 16]
            = static_cast<std::uint8_t>(table[i] ^ (i < 16 ? 0 : table[i - 16]));
    }
    return rows;
}

inline Word lookUp(const ByteTable<32> &table, const Word &indexes)
{
    return shuffle(table.data(), reinterpret_cast<__m256i>(indexes));
}

/// An index becomes negative when more than it is taken off, and a negative index gives 0: so that
/// the differences of all rows up to the wanted one are added, and no other.
inline Word lookUp(const ByteTable<128> &differences, const Word &indexes)
{
    const auto index = reinterpret_cast<__m256i>(indexes);
    const std::uint8_t *const rows = differences.data();
    return shuffle(rows, index) ^ shuffle(rows + 32, _mm256_sub_epi8(index, _mm256_set1_epi8(16)))
        ^ shuffle(rows + 64, _mm256_sub_epi8(index, _mm256_set1_epi8(32)))
        ^ shuffle(rows + 96, _mm256_sub_epi8(index, _mm256_set1_epi8(48)));
}

inline void exchange(Word &a, Word &b, std::uint64_t bits)
{
    const Word moved = (a ^ b) & bits;
    a ^= moved;
    b ^= moved;
}

#include "cipher/lanekernel.inc"

} // namespace
} // namespace seamrevision::des::avx2

#ifdef __clang__
#pragma clang attribute pop
#pragma clang attribute push(__attribute__((target("avx512f,avx512bw,avx512vbmi"))),               \
                             apply_to = function)
#else
#pragma GCC pop_options
#pragma GCC push_options
#pragma GCC target("avx512f,avx512bw,avx512vbmi")
#endif

namespace seamrevision::des::avx512
{
namespace
{

using Word = std::uint64_t __attribute__((vector_size(64)));

inline Word lookUp(const ByteTable<16> &table, const Word &indexes)
{
    const __m128i entries = _mm_loadu_si128(reinterpret_cast<const __m128i *>(table.data()));
    const __m512i fourTimes = _mm512_maskz_broadcast_i32x4(0xffff, entries);
    return reinterpret_cast<Word>(
        _mm512_maskz_shuffle_epi8(~__mmask64{0}, fourTimes, reinterpret_cast<__m512i>(indexes)));
}

template <std::size_t Count>
constexpr const ByteTable<Count> &tableToLookUp(const ByteTable<Count> &table)
{
    return table;
}

inline Word lookUp(const BoxTable &table, const Word &indexes)
{
    return reinterpret_cast<Word>(_mm512_maskz_permutexvar_epi8(
        ~__mmask64{0}, reinterpret_cast<__m512i>(indexes), _mm512_loadu_si512(table.data())));
}

inline Word select(std::uint64_t bits, const Word &a, const Word &b)
{
    constexpr int firstSelects = 0xca;
    return reinterpret_cast<Word>(_mm512_ternarylogic_epi64(
        _mm512_set1_epi64(static_cast<long long>(bits)), reinterpret_cast<__m512i>(a),
        reinterpret_cast<__m512i>(b), firstSelects));
}

inline void exchange(Word &a, Word &b, std::uint64_t bits)
{
    const Word before = a;
    a = select(bits, b, a);
    b = select(bits, before, b);
}

#include "cipher/lanekernel.inc" // NOLINT(readability-duplicate-include): one source, two words

} // namespace
} // namespace seamrevision::des::avx512

#ifdef __clang__
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

namespace seamrevision::des
{

const LaneKernel *avx2Lanes()
{
    static constexpr LaneKernel kernel{avx2::laneCount, 7, avx2::encryptPieces};
    return __builtin_cpu_supports("avx2") ? &kernel : nullptr;
}

const LaneKernel *avx512Lanes()
{
    static constexpr LaneKernel kernel{avx512::laneCount, 5, avx512::encryptPieces};
    return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vbmi") ? &kernel
                                                                                      : nullptr;
}

} // namespace seamrevision::des

#else

namespace seamrevision::des
{

const LaneKernel *avx2Lanes()
{
    return nullptr;
}

const LaneKernel *avx512Lanes()
{
    return nullptr;
}

} // namespace seamrevision::des

#endif
