#pragma once

#include "cipher/cbc.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// How DES lies in vector registers in which every message has one byte, its lane; the same for
/// any number of lanes. Everything follows from the tables of the standard and is computed when
/// this is compiled.
///
/// Half a block is eight registers, one for each S-box: with the six input bits of that box, E
/// already applied, in the low bits of the byte. A box then is one look-up in 64 entries. What it
/// answers has to reach the inputs of other boxes, by P and the E of the next round: a box has four
/// output bits, two of which E takes twice, so that six bits leave every box, six enter every box,
/// and 48 edges lead from one to the other.
///
/// An entry of a box's table has all six bits that leave it, each already at the place within the
/// byte where the box that it goes to wants it. So a bit changes its register but never its place,
/// and P is three exchanges of masked bits between pairs of registers, called wires here. Their
/// numbers differ in bit 0 in the first exchange, in bit 1 in the second, in bit 2 in the third:
/// each exchange brings one bit of the number of a bit's wire to that of its target. That works if
/// no two edges that are on one wire, before, between or behind the exchanges, have the same place;
/// placesOfEdges() finds such places. (Three exchanges are 48 operations; to collect six masked
/// bits for each of eight boxes would be 88.)
namespace seamrevision::des
{

inline constexpr std::size_t edgeCount = 48; ///< edge 6 * box + input leads to that input of a box
inline constexpr int exchangeCount = 3;

/// The bit of a table entry or register that is input 0 to 5 of its box.
using EdgePlaces = std::array<std::uint8_t, edgeCount>;

/// The wire that each box's answer starts on; it ends on the one with the number of its target.
/// Found by trial: most orders crowd more than six edges onto a wire, nearly all others will do.
inline constexpr std::array<std::uint8_t, boxCount> firstWires = {0, 1, 4, 5, 3, 7, 6, 2};

constexpr int targetOf(std::size_t edge)
{
    return static_cast<int>(edge) / boxInputBits;
}

/// The output bit 0 to 31 of all boxes that an edge begins at.
constexpr int sourceBitOf(std::size_t edge)
{
    return roundPermutation[expansion[edge] - std::size_t{1}] - 1;
}

constexpr int sourceOf(std::size_t edge)
{
    return sourceBitOf(edge) / boxOutputBits;
}

/// The wire of an edge behind so many exchanges.
constexpr std::size_t wireOf(std::size_t edge, int exchangesDone)
{
    const unsigned arrived = (1U << exchangesDone) - 1;
    return (firstWires[static_cast<std::size_t>(sourceOf(edge))] & ~arrived)
        | (static_cast<unsigned>(targetOf(edge)) & arrived);
}

/// The places, one bit each, that are taken on each wire behind each number of exchanges.
using TakenPlaces = std::array<std::array<unsigned, boxCount>, exchangeCount + 1>;

/// The places that an edge must not have, since another one on one of its wires has them.
constexpr unsigned takenOnItsWires(const TakenPlaces &taken, std::size_t edge)
{
    unsigned places = 0;
    for (int done = 0; done <= exchangeCount; ++done)
        places |= taken[static_cast<std::size_t>(done)][wireOf(edge, done)];
    return places;
}

constexpr int countOfBits(unsigned bits)
{
    int count = 0;
    for (; bits != 0; bits &= bits - 1)
        ++count;
    return count;
}

constexpr std::uint8_t noPlace = 0xff;

/// Colours the edges: the one with the fewest places left gets the lowest of them, and so on.
/// Where this ends in a dead end a place is boxInputBits or above; it does not for firstWires.
constexpr EdgePlaces placesOfEdges()
{
    TakenPlaces taken{};
    EdgePlaces places{};
    for (std::uint8_t &place : places)
        place = noPlace;
    for (std::size_t step = 0; step < edgeCount; ++step) {
        std::size_t narrowest = 0;
        int mostTaken = -1;
        for (std::size_t edge = 0; edge < edgeCount; ++edge) {
            const int count = countOfBits(takenOnItsWires(taken, edge));
            if (places[edge] == noPlace && count > mostTaken) {
                narrowest = edge;
                mostTaken = count;
            }
        }
        std::uint8_t place = 0;
        while (((takenOnItsWires(taken, narrowest) >> place) & 1U) != 0)
            ++place;
        places[narrowest] = place;
        for (int done = 0; done <= exchangeCount; ++done)
            taken[static_cast<std::size_t>(done)][wireOf(narrowest, done)] |= 1U << place;
    }
    return places;
}

inline constexpr EdgePlaces edgePlaces = placesOfEdges();

/// Whether any two edges that meet on a wire have different places, and all places fit.
constexpr bool isProperColouring(const EdgePlaces &places)
{
    for (std::size_t a = 0; a < edgeCount; ++a) {
        if (places[a] >= boxInputBits)
            return false;
        for (std::size_t b = 0; b < a; ++b) {
            for (int done = 0; done <= exchangeCount; ++done) {
                if (places[a] == places[b] && wireOf(a, done) == wireOf(b, done))
                    return false;
            }
        }
    }
    return true;
}

static_assert(isProperColouring(edgePlaces));

/// One byte in every lane.
constexpr std::uint64_t inEachLane(unsigned byte)
{
    return byte * 0x0101010101010101U;
}

/// The bits in which a wire and the one with the same number but for bit `exchange` change places.
/// The wire with that bit 0 is named; the other one gives away the same places.
constexpr std::uint64_t exchangedBits(int exchange, std::size_t wire)
{
    unsigned bits = 0;
    for (std::size_t edge = 0; edge < edgeCount; ++edge) {
        if (wireOf(edge, exchange) == wire && wireOf(edge, exchange + 1) != wire)
            bits |= 1U << edgePlaces[edge];
    }
    return inEachLane(bits);
}

/// Six bits as the standard writes them, input 0 first, put to the places of a box's inputs.
constexpr std::uint8_t placed(int box, unsigned sixBits)
{
    unsigned bits = 0;
    std::size_t edge = edgeCount / boxCount * static_cast<std::size_t>(box);
    for (int shift = boxInputBits - 1; shift >= 0; --shift, ++edge)
        bits |= ((sixBits >> shift) & 1U) << edgePlaces[edge];
    return static_cast<std::uint8_t>(bits);
}

template <std::size_t Count>
using ByteTable = std::array<std::uint8_t, Count>;

/// Tables of 64 entries are indexed by the bits of a box at their places.
using BoxTable = ByteTable<64>;

/// What a box answers: the bits of all edges that begin at it.
constexpr BoxTable answersOf(int box)
{
    BoxTable table{};
    for (unsigned sixBits = 0; sixBits < table.size(); ++sixBits) {
        const unsigned answer = substitute(box, sixBits);
        unsigned bits = 0;
        for (std::size_t edge = 0; edge < edgeCount; ++edge) {
            const int output = sourceBitOf(edge) % boxOutputBits;
            if (sourceOf(edge) == box)
                bits |= ((answer >> (boxOutputBits - 1 - output)) & 1U) << edgePlaces[edge];
        }
        table[placed(box, sixBits)] = static_cast<std::uint8_t>(bits);
    }
    return table;
}

/// Back from a box's bits to its group, the four bits of half a block that it has for itself. The
/// groups of boxes 0, 2, 4 and 6 are the high halves of bytes.
constexpr BoxTable groupsOf(int box)
{
    BoxTable table{};
    for (unsigned sixBits = 0; sixBits < table.size(); ++sixBits) {
        const unsigned group = (sixBits >> 1) & 15U;
        table[placed(box, sixBits)] = static_cast<std::uint8_t>(box % 2 == 0 ? group << 4 : group);
    }
    return table;
}

/// What the group of box + neighbour, where neighbour is -1, 0 or 1, gives to the inputs of a box
/// when a half block enters the rounds, by E.
constexpr ByteTable<16> inputsFromGroup(int box, int neighbour)
{
    ByteTable<16> table{};
    for (unsigned group = 0; group < table.size(); ++group) {
        const unsigned sixBits = neighbour < 0 ? (group & 1U) << 5
            : neighbour > 0                    ? group >> 3
                                               : group << 1;
        table[group] = placed(box, sixBits);
    }
    return table;
}

/// For each box its six bits of a round key at their places, in every lane.
using LaneKey = std::array<std::uint64_t, boxCount>;

constexpr LaneKey laneKey(std::uint64_t key)
{
    LaneKey boxes{};
    for (int box = 0; box < boxCount; ++box) {
        const auto sixBits = static_cast<unsigned>(key >> (boxInputBits * (boxCount - 1 - box)));
        boxes[static_cast<std::size_t>(box)] = inEachLane(placed(box, sixBits & 0x3fU));
    }
    return boxes;
}

/// What the rounds need of a key. A half block enters a round with that round's key already added;
/// carried[i] goes to the half that round i changes: it takes off the key of the round before,
/// which that half still has, and adds the one of the next round, which it goes into.
struct LaneKeys
{
    LaneKey first{};
    std::array<LaneKey, roundCount> carried{};
    LaneKey last{}; ///< still on the half that the last round does not change
};

constexpr LaneKeys laneKeys(const KeySchedule &keys)
{
    LaneKeys all;
    all.first = laneKey(keys.front());
    all.last = laneKey(keys.back());
    for (std::size_t round = 0; round < roundCount; ++round) {
        const std::uint64_t before = round > 0 ? keys[round - 1] : 0;
        const std::uint64_t next = round + 1 < roundCount ? keys[round + 1] : 0;
        all.carried[round] = laneKey(before ^ next);
    }
    return all;
}

} // namespace seamrevision::des
