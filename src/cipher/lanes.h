#pragma once

#include "cipher/lanelayout.h"

#include <cstddef>

/// DES in the cipher block chaining mode of FIPS 81 on many messages side by side. Each block of a
/// message waits for the one before it, but messages do not wait for each other.
namespace seamrevision::des
{

/// Blocks of a message that go through a kernel at one time, from a buffer of its own: as many
/// streams of memory as there are lanes would be more than a processor reads ahead.
inline constexpr std::size_t pieceBlocks = 256;

/// From the piece of one lane to that of the next. Pieces a power of two apart would share the few
/// places in the cache that belong to such an address.
inline constexpr std::size_t pieceStride = (pieceBlocks + 8) * blockBytes;

/// A way to encipher for a kind of processor.
struct LaneKernel
{
    std::size_t laneCount;
    /// The fewest lanes in use with which it beats one message after the other.
    std::size_t worthwhileLanes;
    /// Enciphers blockCount blocks, up to pieceBlocks of them, of each lane in place. The piece of
    /// lane i begins at pieces + i * pieceStride; vectors has a block a lane, which becomes the
    /// last one written.
    void (*encrypt)(const LaneKeys &keys, unsigned char *pieces, Block *vectors,
                    std::size_t blockCount);
};

/// 32 lanes; nullptr when the library was built for another kind of processor or this one lacks
/// AVX2.
const LaneKernel *avx2Lanes();

/// 64 lanes, for processors with AVX-512 VBMI; nullptr as above.
const LaneKernel *avx512Lanes();

} // namespace seamrevision::des
