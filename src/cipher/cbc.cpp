#include "cipher/cbc.h"

#include <cstring>

namespace seamrevision::des
{
namespace
{

/// A half block with E of FIPS 46-3 already applied: a byte for each S-box, that of S8 lowest, with
/// the six bits of the box below two zeros.
///
/// Sums of half blocks are sums of their expanded forms, so the rounds never leave this form, and
/// a single XOR adds a round key.
using Expanded = std::uint64_t;

struct Halves
{
    Expanded left = 0;
    Expanded right = 0;
};

/// What the rounds need of a key. A half block enters a round with that round's key already
/// added, so that no key lies on the way from one S-box to the next; carried[i] takes the key of
/// round i off again and adds the one of round i + 2, where the same half is used next.
struct RoundKeys
{
    Halves first; ///< keys of the first two rounds
    std::array<Expanded, roundCount> carried{};
};

constexpr Expanded rotateLeft(Expanded value, int count)
{
    return (value << count) | (value >> (64 - count));
}

/// E, from half a block with one group of four bits in the low half of each byte: a group gets
/// the last bit of the one before it and the first bit of the one after it.
constexpr Expanded expand(std::uint64_t nibbles)
{
    return (nibbles << 1) | rotateLeft(nibbles & 0x0101010101010101U, 61)
        | rotateLeft(nibbles & 0x0808080808080808U, 5);
}

/// The place of bit 1 to 32 of half a block when its groups of four lie in the low half of bytes.
constexpr int nibblePlace(int bit)
{
    return 56 - 8 * ((bit - 1) / 4) + 3 - (bit - 1) % 4;
}

/// What an S-box answers, led through P and the E of the next round.
constexpr Expanded answerOf(int box, unsigned sixBits)
{
    const std::uint64_t answer = substitute(box, sixBits);
    std::uint64_t nibbles = 0;
    for (int bit = 1; bit <= 32; ++bit) {
        const int source = roundPermutation[static_cast<std::size_t>(bit - 1)] - 1;
        if (source / boxOutputBits == box)
            nibbles |= ((answer >> (3 - source % 4)) & 1U) << nibblePlace(bit);
    }
    return expand(nibbles);
}

/// Boxes are looked up in pairs, 16 bits of a half block at a time: its low byte is an index into
/// the table of an even-numbered box, and the byte above it, where it stands, the offset in bytes
/// of a row that has the answers of the four odd-numbered boxes. So four boxes need no shift.
constexpr std::size_t pairCount = boxCount / 2;
constexpr std::size_t rowBytes = 256;
constexpr std::size_t rowEntries = rowBytes / sizeof(Expanded);
using EvenBoxTable = std::array<Expanded, 64>;
using OddBoxRows = std::array<Expanded, 64 * rowEntries>;

/// The box whose byte is so far up a word.
constexpr int boxOfByte(std::size_t byte)
{
    return boxCount - 1 - static_cast<int>(byte);
}

constexpr EvenBoxTable evenBoxTable(std::size_t pair)
{
    EvenBoxTable table{};
    for (unsigned sixBits = 0; sixBits < 64; ++sixBits)
        table[sixBits] = answerOf(boxOfByte(2 * pair), sixBits);
    return table;
}

constexpr OddBoxRows oddBoxRows()
{
    OddBoxRows rows{};
    for (unsigned sixBits = 0; sixBits < 64; ++sixBits) {
        for (std::size_t pair = 0; pair < pairCount; ++pair)
            rows[rowEntries * sixBits + pair] = answerOf(boxOfByte(2 * pair + 1), sixBits);
    }
    return rows;
}

constexpr std::array<EvenBoxTable, pairCount> evenBoxes
    = {evenBoxTable(0), evenBoxTable(1), evenBoxTable(2), evenBoxTable(3)};
constexpr OddBoxRows oddBoxes = oddBoxRows();

inline Expanded evenAnswer(std::size_t pair, Expanded word)
{
    return evenBoxes[pair][word & 0xffU];
}

inline Expanded oddAnswer(std::size_t pair, Expanded word)
{
    Expanded entry;
    std::memcpy(&entry, reinterpret_cast<const char *>(oddBoxes.data() + pair) + (word & 0x3f00U),
                sizeof entry);
    return entry;
}

/// A half block plus the cipher function f of the other one, whose key is added already.
///
/// The answers of different boxes have no bit in common, so that OR and XOR both unite them. OR
/// in pairs and XOR of the pairs keeps the chain of sums short: of XOR alone a compiler strings
/// eight together.
inline Expanded addCipherFunction(Expanded half, Expanded keyed)
{
    const Expanded s8 = evenAnswer(0, keyed);
    const Expanded s7 = oddAnswer(0, keyed);
    const Expanded s6 = evenAnswer(1, keyed >> 16);
    const Expanded s5 = oddAnswer(1, keyed >> 16);
    const Expanded s4 = evenAnswer(2, keyed >> 32);
    const Expanded s3 = oddAnswer(2, keyed >> 32);
    const Expanded s2 = evenAnswer(3, keyed >> 48);
    const Expanded s1 = oddAnswer(3, keyed >> 48);
    return half ^ s8 ^ s7 ^ (s6 | s5) ^ (s4 | s3) ^ (s2 | s1);
}

/// One round, from halves with their keys added to halves with the next keys added. The halves do
/// not change places: the next round takes them the other way round.
inline void addRound(Expanded &half, Expanded &other, Expanded carriedKey)
{
    half = addCipherFunction(half, other);
    other ^= carriedKey;
}

/// Eight of the sixteen rounds, written out: a loop over them is slower by a tenth.
inline Halves eightRounds(Halves halves, const Expanded *carriedKeys)
{
    Expanded left = halves.left;
    Expanded right = halves.right;
    addRound(left, right, carriedKeys[0]);
    addRound(right, left, carriedKeys[1]);
    addRound(left, right, carriedKeys[2]);
    addRound(right, left, carriedKeys[3]);
    addRound(left, right, carriedKeys[4]);
    addRound(right, left, carriedKeys[5]);
    addRound(left, right, carriedKeys[6]);
    addRound(right, left, carriedKeys[7]);
    return {left, right};
}

/// Rounds 1 to 8, from halves with the keys of the first two rounds added.
inline Halves firstRounds(const RoundKeys &keys, const Halves &halves)
{
    return eightRounds(halves, keys.carried.data());
}

/// Rounds 9 to 16. The halves end up without a key, and exchanged, as the standard wants them
/// before the final permutation.
inline Halves lastRounds(const RoundKeys &keys, const Halves &halves)
{
    const Halves ended = eightRounds(halves, keys.carried.data() + roundCount / 2);
    return {ended.right, ended.left};
}

/// Exchanges rows and columns of a block seen as eight rows of eight bits.
constexpr std::uint64_t transpose(std::uint64_t rows)
{
    std::uint64_t moved = (rows ^ (rows >> 7)) & 0x00aa00aa00aa00aaU;
    rows ^= moved ^ (moved << 7);
    moved = (rows ^ (rows >> 14)) & 0x0000cccc0000ccccU;
    rows ^= moved ^ (moved << 14);
    moved = (rows ^ (rows >> 28)) & 0x00000000f0f0f0f0U;
    return rows ^ moved ^ (moved << 28);
}

/// Puts the four bytes of a half, one in each pair of bytes, into the low halves of eight bytes.
constexpr std::uint64_t spread(std::uint64_t bytes)
{
    return (bytes | (bytes << 4)) & 0x0f0f0f0f0f0f0f0fU;
}

constexpr std::uint64_t gather(Expanded half)
{
    const std::uint64_t nibbles = (half >> 1) & 0x0f0f0f0f0f0f0f0fU;
    return (nibbles | (nibbles >> 4)) & 0x00ff00ff00ff00ffU;
}

/// IP. With the first byte of the block lowest it is an exchange of rows and columns: every
/// second column goes to the left half, the others to the right one.
constexpr Halves initialHalves(Block block)
{
    const std::uint64_t columns = transpose(block);
    return {expand(spread(columns & 0x00ff00ff00ff00ffU)),
            expand(spread((columns >> 8) & 0x00ff00ff00ff00ffU))};
}

/// The inverse of IP.
constexpr Block finalBlock(const Halves &halves)
{
    return transpose(gather(halves.left) | (gather(halves.right) << 8));
}

constexpr Halves operator^(const Halves &a, const Halves &b)
{
    return {a.left ^ b.left, a.right ^ b.right};
}

/// The 48 bits of a round key, six a byte.
constexpr Expanded keyGroups(std::uint64_t key)
{
    Expanded groups = 0;
    for (int box = 0; box < boxCount; ++box)
        groups = (groups << 8) | ((key >> (boxInputBits * (7 - box))) & 0x3fU);
    return groups;
}

/// Keys in the order in which the rounds use them: K1 first to encipher, K16 first to decipher.
template <typename Iterator>
RoundKeys roundKeys(Iterator key)
{
    std::array<Expanded, roundCount + 2> groups{};
    for (std::size_t round = 0; round < roundCount; ++round, ++key)
        groups[round] = keyGroups(*key);
    RoundKeys keys;
    keys.first = {groups[1], groups[0]};
    for (std::size_t round = 0; round < roundCount; ++round)
        keys.carried[round] = groups[round] ^ groups[round + 2];
    return keys;
}

/// Picks the bits that a table of the standard names out of a word of the given width.
template <std::size_t Count>
std::uint64_t select(std::uint64_t word, int width, const std::array<std::uint8_t, Count> &bits)
{
    std::uint64_t selected = 0;
    for (const std::uint8_t bit : bits)
        selected = (selected << 1) | ((word >> (width - bit)) & 1U);
    return selected;
}

} // namespace

KeySchedule keySchedule(const unsigned char *key)
{
    constexpr int halfBits = 28;
    constexpr std::uint64_t halfMask = (1U << halfBits) - 1;
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < blockBytes; ++i)
        word = (word << 8) | key[i];

    const std::uint64_t chosen = select(word, 64, keyChoice1);
    std::uint64_t c = chosen >> halfBits;
    std::uint64_t d = chosen & halfMask;
    KeySchedule keys{};
    for (std::size_t round = 0; round < roundCount; ++round) {
        const int shift = keyShifts[round];
        c = ((c << shift) | (c >> (halfBits - shift))) & halfMask;
        d = ((d << shift) | (d >> (halfBits - shift))) & halfMask;
        keys[round] = select((c << halfBits) | d, 2 * halfBits, keyChoice2);
    }
    return keys;
}

Block encryptCbc(const KeySchedule &keys, Block vector, const unsigned char *in, unsigned char *out,
                 std::size_t blockCount)
{
    if (blockCount == 0)
        return vector;

    // Each block waits for the one before it, so only the way from one S-box to the next counts;
    // what need not lie on it runs beside it. IP is linear: the sum with the block before is taken
    // behind IP, where the final permutation of that block and IP of this one cancel out. IP of
    // the next block stands among the rounds, early enough for the processor to have it ready.
    const RoundKeys roundKeysInOrder = roundKeys(keys.begin());
    const Halves &firstKeys = roundKeysInOrder.first;
    Halves chain = initialHalves(vector);
    Halves plain = initialHalves(loadBlock(in)) ^ firstKeys;
    for (std::size_t i = 0; i < blockCount; ++i) {
        const Halves halfway = firstRounds(roundKeysInOrder, chain ^ plain);
        const std::size_t following = i + 1 < blockCount ? i + 1 : i;
        plain = initialHalves(loadBlock(in + following * blockBytes)) ^ firstKeys;
        chain = lastRounds(roundKeysInOrder, halfway);
        storeBlock(out + i * blockBytes, finalBlock(chain));
    }
    return finalBlock(chain);
}

void decryptCbc(const KeySchedule &keys, Block vector, const unsigned char *in, unsigned char *out,
                std::size_t blockCount)
{
    const RoundKeys reversedKeys = roundKeys(keys.rbegin());
    for (std::size_t i = 0; i < blockCount; ++i) {
        const Block block = loadBlock(in + i * blockBytes);
        const Halves halfway = firstRounds(reversedKeys, initialHalves(block) ^ reversedKeys.first);
        storeBlock(out + i * blockBytes, finalBlock(lastRounds(reversedKeys, halfway)) ^ vector);
        vector = block;
    }
}

} // namespace seamrevision::des
