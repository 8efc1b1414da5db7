#include "cipher/cbc.h"

#include <cstring>

namespace seamrevision::des
{
namespace
{

/// A half block with E of FIPS 46-3 already applied: eight fields of eight bits, the field of S8
/// in bits 3 to 10, that of S7 in bits 11 to 18 and so on, that of S1 round the end of the word.
/// A field has the six bits of its S-box below two bits that say which of four tables is meant.
/// In bits 3 to 10 a field is the byte offset of its table entry.
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

constexpr std::size_t tablesTogether = 4;
using BoxTables = std::array<Expanded, tablesTogether * 64>;

/// The table numbers of all fields: 0 to 3 for S8 to S5, and again for S4 to S1. They are added
/// once; whatever the rounds add is 0 in these bits, and the final permutation drops them.
constexpr Expanded tableNumbers = 0x0402000604020006U;

constexpr Expanded rotateLeft(Expanded value, int count)
{
    return (value << count) | (value >> (64 - count));
}

/// E, from half a block with one group of four bits in the low half of each byte: a group gets
/// the last bit of the one before it and the first bit of the one after it.
constexpr Expanded expand(std::uint64_t nibbles)
{
    return rotateLeft(nibbles, 4) | (nibbles & 0x0101010101010101U)
        | (rotateLeft(nibbles, 8) & 0x0808080808080808U);
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

/// The answers of four S-boxes, the last one first.
constexpr BoxTables boxTables(int lastBox)
{
    BoxTables tables{};
    for (unsigned entry = 0; entry < tables.size(); ++entry)
        tables[entry] = answerOf(lastBox - static_cast<int>(entry / 64), entry % 64);
    return tables;
}

/// Two objects of their own, so that each is reached through a register of its own: an address
/// made of two registers and nothing else is the quickest.
constexpr BoxTables tablesOfBoxes8To5 = boxTables(7);
constexpr BoxTables tablesOfBoxes4To1 = boxTables(3);

/// The entry for the field that begins at bit 3 of a word.
inline Expanded lookUp(const BoxTables &tables, std::uint64_t word)
{
    Expanded entry;
    std::memcpy(&entry, reinterpret_cast<const char *>(tables.data()) + (word & 0x7f8U),
                sizeof entry);
    return entry;
}

/// A half block plus the cipher function f of the other one, whose key is added already.
///
/// The answers of different boxes have no bit in common, so that OR and XOR both unite them. OR
/// in pairs and XOR of the pairs keeps the chain of sums short: of XOR alone a compiler strings
/// eight together. The answer of S8 needs no shift and comes first.
inline Expanded addCipherFunction(Expanded half, Expanded keyed)
{
    const Expanded s8 = lookUp(tablesOfBoxes8To5, keyed);
    const Expanded s7 = lookUp(tablesOfBoxes8To5, keyed >> 8);
    const Expanded s6 = lookUp(tablesOfBoxes8To5, keyed >> 16);
    const Expanded s5 = lookUp(tablesOfBoxes8To5, keyed >> 24);
    const Expanded s4 = lookUp(tablesOfBoxes4To1, keyed >> 32);
    const Expanded s3 = lookUp(tablesOfBoxes4To1, keyed >> 40);
    const Expanded s2 = lookUp(tablesOfBoxes4To1, keyed >> 48);
    const Expanded s1 = lookUp(tablesOfBoxes4To1, rotateLeft(keyed, 8));
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
    const std::uint64_t nibbles = rotateLeft(half, 60) & 0x0f0f0f0f0f0f0f0fU;
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
    return rotateLeft(groups, 3);
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
    Halves chain = initialHalves(vector) ^ Halves { tableNumbers, tableNumbers };
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
    RoundKeys reversedKeys = roundKeys(keys.rbegin());
    reversedKeys.first = reversedKeys.first ^ Halves { tableNumbers, tableNumbers };
    for (std::size_t i = 0; i < blockCount; ++i) {
        const Block block = loadBlock(in + i * blockBytes);
        const Halves halfway = firstRounds(reversedKeys, initialHalves(block) ^ reversedKeys.first);
        storeBlock(out + i * blockBytes, finalBlock(lastRounds(reversedKeys, halfway)) ^ vector);
        vector = block;
    }
}

} // namespace seamrevision::des
