#pragma once

#include "cipher/cbc.h"
#include "cipher/lanes.h"
#include "cipher/padding.h"

#include <cstddef>
#include <functional>
#include <vector>

/// Messages enciphered side by side, each a chain of its own: the bytes that DES::DESEncrypt makes
/// of one after the other, padding included, in a fraction of the time.
namespace seamrevision::des
{

/// A message to encipher: where its bytes come from and where its ciphertext goes. A plain value;
/// what it refers to stays the caller's and has to stay as it is until encryptChains() returns.
struct Chain
{
    std::size_t messageSize = 0; ///< in bytes; 0 makes a ciphertext of padding alone

    /// Writes the next count bytes of the message to bytes. It is asked for them in order, for at
    /// most pieceBlocks * blockBytes at a time, never for none, and for messageSize bytes in all;
    /// in between, other chains are asked for theirs. So a message need not lie in memory as a
    /// whole. Whoever wants to know later what was enciphered can take a digest here.
    std::function<void(unsigned char *bytes, std::size_t count)> read;

    /// Room for paddedSize(messageSize) bytes, apart from that of all other chains. It is written
    /// from its beginning to its end and never read.
    unsigned char *ciphertext = nullptr;
};

/// The quickest kernel for this processor; nullptr where there is only one chain after the other.
const LaneKernel *laneKernel();

/// How many chains are enciphered together here; 0 where nothing is gained by handing over more
/// than one. Fewer chains take as long as so many, down to a few that go one after the other.
std::size_t chainsTogether();

/// Enciphers any number of messages of any lengths, all with the same key and vector. The longest
/// begin; where a message ends, the next one takes its lane. Best are multiples of
/// chainsTogether() messages of much the same length.
///
/// Beside the ciphertexts it takes pieceStride bytes of memory a lane. What the allocator or a read
/// function throws goes to the caller, with the ciphertexts in any state.
void encryptChains(const KeySchedule &keys, Block vector, const std::vector<Chain> &chains,
                   const LaneKernel *kernel = laneKernel());

} // namespace seamrevision::des
