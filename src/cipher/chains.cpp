#include "cipher/chains.h"

#include <algorithm>

namespace seamrevision::des
{
namespace
{

/// A chain on its way through a piece of memory; without a chain it is idle.
class Lane
{
public:
    Lane() = default;
    explicit Lane(const Chain &chain)
        : m_chain(&chain)
        , m_bytesLeft(chain.messageSize)
        , m_blocksLeft(paddedSize(chain.messageSize) / blockBytes)
        , m_ciphertext(chain.ciphertext)
    {
    }

    /// Blocks still to encipher, the padded one included.
    std::size_t blocksLeft() const { return m_blocksLeft; }
    bool isIdle() const { return m_blocksLeft == 0; }

    void readPlaintext(unsigned char *piece, std::size_t blockCount);
    void writeCiphertext(const unsigned char *piece, std::size_t blockCount);

private:
    const Chain *m_chain = nullptr;
    std::size_t m_bytesLeft = 0;
    std::size_t m_blocksLeft = 0;
    unsigned char *m_ciphertext = nullptr;
};

void Lane::readPlaintext(unsigned char *piece, std::size_t blockCount)
{
    const std::size_t count = std::min(blockCount * blockBytes, m_bytesLeft);
    if (count > 0)
        m_chain->read(piece, count);
    if (blockCount == m_blocksLeft)
        appendPadding(piece, count);
    m_bytesLeft -= count;
}

void Lane::writeCiphertext(const unsigned char *piece, std::size_t blockCount)
{
    m_ciphertext = std::copy_n(piece, blockCount * blockBytes, m_ciphertext);
    m_blocksLeft -= blockCount;
}

/// Takes one lane to its end.
void encryptSerially(const KeySchedule &keys, Block vector, Lane lane, unsigned char *piece)
{
    while (!lane.isIdle()) {
        const std::size_t blockCount = std::min(pieceBlocks, lane.blocksLeft());
        lane.readPlaintext(piece, blockCount);
        vector = encryptCbc(keys, vector, piece, piece, blockCount);
        lane.writeCiphertext(piece, blockCount);
    }
}

/// The lanes of a kernel, with what it wants to know of each of them.
class LaneGroup
{
public:
    explicit LaneGroup(const LaneKernel &kernel)
        : m_kernel(kernel)
        , m_lanes(kernel.laneCount)
        , m_vectors(kernel.laneCount)
        , m_pieces(kernel.laneCount * pieceStride)
    {
    }

    /// Gives the last of the waiting chains to idle lanes. Returns how many lanes are in use.
    std::size_t refill(std::vector<const Chain *> &waiting, Block vector);
    /// Takes all lanes as far as the first one goes, or a piece.
    void advance(const LaneKeys &keys);
    /// Takes each lane to its end alone.
    void finish(const KeySchedule &keys);

private:
    unsigned char *piece(std::size_t lane) { return m_pieces.data() + lane * pieceStride; }

    const LaneKernel &m_kernel;
    std::vector<Lane> m_lanes;
    std::vector<Block> m_vectors;
    std::vector<unsigned char> m_pieces;
};

std::size_t LaneGroup::refill(std::vector<const Chain *> &waiting, Block vector)
{
    std::size_t inUse = 0;
    for (std::size_t i = 0; i < m_lanes.size(); ++i) {
        if (m_lanes[i].isIdle() && !waiting.empty()) {
            m_lanes[i] = Lane(*waiting.back());
            m_vectors[i] = vector;
            waiting.pop_back();
        }
        if (!m_lanes[i].isIdle())
            ++inUse;
    }
    return inUse;
}

void LaneGroup::advance(const LaneKeys &keys)
{
    std::size_t blockCount = pieceBlocks;
    for (const Lane &lane : m_lanes) {
        if (!lane.isIdle())
            blockCount = std::min(blockCount, lane.blocksLeft());
    }
    for (std::size_t i = 0; i < m_lanes.size(); ++i) {
        if (!m_lanes[i].isIdle())
            m_lanes[i].readPlaintext(piece(i), blockCount);
    }
    m_kernel.encrypt(keys, m_pieces.data(), m_vectors.data(), blockCount);
    for (std::size_t i = 0; i < m_lanes.size(); ++i) {
        if (!m_lanes[i].isIdle())
            m_lanes[i].writeCiphertext(piece(i), blockCount);
    }
}

void LaneGroup::finish(const KeySchedule &keys)
{
    for (std::size_t i = 0; i < m_lanes.size(); ++i)
        encryptSerially(keys, m_vectors[i], m_lanes[i], piece(i));
}

/// The longest last, where they are taken from.
std::vector<const Chain *> byLength(const std::vector<Chain> &chains)
{
    std::vector<const Chain *> sorted;
    sorted.reserve(chains.size());
    for (const Chain &chain : chains)
        sorted.push_back(&chain);
    std::stable_sort(sorted.begin(), sorted.end(), [](const Chain *a, const Chain *b) {
        return a->messageSize < b->messageSize;
    });
    return sorted;
}

} // namespace

const LaneKernel *laneKernel()
{
    const LaneKernel *const widest = avx512Lanes();
    return widest != nullptr ? widest : avx2Lanes();
}

std::size_t chainsTogether()
{
    const LaneKernel *const kernel = laneKernel();
    return kernel != nullptr ? kernel->laneCount : 0;
}

void encryptChains(const KeySchedule &keys, Block vector, const std::vector<Chain> &chains,
                   const LaneKernel *kernel)
{
    if (kernel == nullptr || chains.size() < kernel->worthwhileLanes) {
        std::vector<unsigned char> piece(pieceStride);
        for (const Chain &chain : chains)
            encryptSerially(keys, vector, Lane(chain), piece.data());
        return;
    }
    const LaneKeys keysOfLanes = laneKeys(keys);
    LaneGroup lanes(*kernel);
    std::vector<const Chain *> waiting = byLength(chains);
    while (lanes.refill(waiting, vector) >= kernel->worthwhileLanes)
        lanes.advance(keysOfLanes);
    lanes.finish(keys);
}

} // namespace seamrevision::des
