#pragma once

#include "cipher/cbc.h"

#include <cstddef>

/// DES in the cipher block chaining mode of FIPS 81, deciphered many blocks at a time.
///
/// Blocks are deciphered independently of each other, so one bit of 64 blocks goes into one word,
/// and the rounds become logic on whole words: permutations cost nothing, S-boxes are circuits of
/// gates (cipher/boxcircuit.h). Enciphering cannot be done so, each block waits for another.
namespace seamrevision::des
{

/// Deciphers blockCount blocks, any number of them; in and out lie apart.
using DecryptCbc = void (*)(const KeySchedule &keys, Block vector, const unsigned char *in,
                            unsigned char *out, std::size_t blockCount);

/// Blocks from which on a batch, which costs the same whether full or not, beats plain rounds.
inline constexpr std::size_t bitsliceWorthwhile = 40;

/// Words of 64 bits; for any processor.
void decryptCbcBitsliced(const KeySchedule &keys, Block vector, const unsigned char *in,
                         unsigned char *out, std::size_t blockCount);

/// The version for AVX2, the same source with words of 256 bits; nullptr when the library was
/// built for another kind of processor or this one lacks AVX2.
DecryptCbc decryptCbcAvx2();

/// The quickest version for this processor and a message of so many blocks.
DecryptCbc decryptCbcFor(std::size_t blockCount);

} // namespace seamrevision::des
