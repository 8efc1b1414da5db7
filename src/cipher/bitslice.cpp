#include "cipher/bitslice.h"

#include "cipher/boxcircuit.h"

#include <cstdint>
#include <cstring>
#include <utility>

#if defined(__x86_64__) && defined(__GNUC__)
#define SEAMREVISION_DES_AVX2
#endif

namespace seamrevision::des
{
namespace
{

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
constexpr bool littleEndian = false;
#else
constexpr bool littleEndian = true;
#endif

static_assert(isRight(boxCircuit<0>, 0) && isRight(boxCircuit<1>, 1) && isRight(boxCircuit<2>, 2)
              && isRight(boxCircuit<3>, 3) && isRight(boxCircuit<4>, 4) && isRight(boxCircuit<5>, 5)
              && isRight(boxCircuit<6>, 6) && isRight(boxCircuit<7>, 7));

/// The bit of a round key that goes into an input of a box's circuit, whose input 0 is the last of
/// the six bits. Bits count from 0 here and below.
constexpr std::size_t keyBitOfInput(int box, std::size_t input)
{
    return static_cast<std::size_t>(boxInputBits * (box + 1) - 1) - input;
}

/// The bit of the half block that goes into an input, by E.
constexpr std::size_t halfBitOfInput(int box, std::size_t input)
{
    return expansion[keyBitOfInput(box, input)] - std::size_t{1};
}

/// The bit of the other half block that an output is added to, by P.
constexpr std::size_t halfBitOfOutput(int box, std::size_t output)
{
    const std::size_t boxBit = static_cast<std::size_t>(boxOutputBits * box) + output;
    std::size_t place = 0;
    while (roundPermutation[place] != boxBit + 1)
        ++place;
    return place;
}

/// Whether the circuits invert what they add to bit 1 to 32 of a half block.
constexpr bool halfBitInverted(int bit)
{
    const int source = roundPermutation[static_cast<std::size_t>(bit - 1)] - 1;
    const unsigned outputs = invertedOutputs(source / boxOutputBits);
    return ((outputs >> (boxOutputBits - 1 - source % boxOutputBits)) & 1U) != 0;
}

} // namespace

namespace portable
{
namespace
{
using Word = std::uint64_t;
#include "cipher/bitslicekernel.inc"
} // namespace
} // namespace portable

#ifdef SEAMREVISION_DES_AVX2

#ifdef __clang__
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2")
#endif

namespace avx2
{
namespace
{
using Word = std::uint64_t __attribute__((vector_size(32)));
#include "cipher/bitslicekernel.inc" // NOLINT(readability-duplicate-include): one source, two words
} // namespace
} // namespace avx2

#ifdef __clang__
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

#endif

void decryptCbcBitsliced(const KeySchedule &keys, Block vector, const unsigned char *in,
                         unsigned char *out, std::size_t blockCount)
{
    portable::decryptMessage(keys, vector, in, out, blockCount);
}

DecryptCbc decryptCbcAvx2()
{
#ifdef SEAMREVISION_DES_AVX2
    if (__builtin_cpu_supports("avx2"))
        return avx2::decryptMessage;
#endif
    return nullptr;
}

DecryptCbc decryptCbcFor(std::size_t blockCount)
{
    if (blockCount < bitsliceWorthwhile)
        return decryptCbc;
    const DecryptCbc avx2 = decryptCbcAvx2();
    return avx2 != nullptr ? avx2 : decryptCbcBitsliced;
}

} // namespace seamrevision::des
