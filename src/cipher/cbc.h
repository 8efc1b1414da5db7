#pragma once

#include "cipher/tables.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// DES over whole blocks in the cipher block chaining mode of FIPS 81, one block at a time.
namespace seamrevision::des
{

inline constexpr std::size_t blockBytes = 8;

/// The sixteen round keys K1 to K16, 48 bits each, bit 1 of the standard in bit 47.
using KeySchedule = std::array<std::uint64_t, roundCount>;

/// One block as it lies in memory, its first byte lowest.
using Block = std::uint64_t;

/// Written out, since compilers make one load of this and not of a loop.
inline Block loadBlock(const unsigned char *bytes)
{
    const auto byte = [bytes](int i) { return static_cast<Block>(bytes[i]) << (8 * i); };
    return byte(0) | byte(1) | byte(2) | byte(3) | byte(4) | byte(5) | byte(6) | byte(7);
}

inline void storeBlock(unsigned char *bytes, Block block)
{
    for (std::size_t i = 0; i < blockBytes; ++i)
        bytes[i] = static_cast<unsigned char>(block >> (8 * i));
}

/// The round keys of an 8-byte key; parity bits are ignored.
KeySchedule keySchedule(const unsigned char *key);

/// Enciphers blockCount blocks; in and out may be the same place or lie apart.
/// Returns the last block written, the vector of whatever follows (initially: vector itself).
Block encryptCbc(const KeySchedule &keys, Block vector, const unsigned char *in, unsigned char *out,
                 std::size_t blockCount);

/// Deciphers blockCount blocks; in and out may be the same place or lie apart.
/// The truth which the bitsliced versions are compared with, and quicker than they are when a
/// message is short.
void decryptCbc(const KeySchedule &keys, Block vector, const unsigned char *in, unsigned char *out,
                std::size_t blockCount);

} // namespace seamrevision::des
