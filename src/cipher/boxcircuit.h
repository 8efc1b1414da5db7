#pragma once

#include "cipher/tables.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// The S-boxes as circuits of two-input gates, made by the compiler out of the tables of the
/// standard, for rounds that work on one bit of many blocks at a time.
///
/// A function of the six inputs of a box is a word of 64 bits, its truth table. Every function in
/// a circuit is kept in the form that is 0 for input 0: a function that is 1 there is replaced by
/// its complement. AND, AND-NOT, OR and XOR of such functions are such functions again, so that a
/// circuit needs no inverter; what the outputs lack, invertedOutputs() tells.
namespace seamrevision::des
{

using TruthTable = std::uint64_t;

/// Input variable 0 is the last of the six bits, the lowest bit of the input number.
inline constexpr std::array<TruthTable, boxInputBits> inputTables = {
    0xaaaaaaaaaaaaaaaaU, 0xccccccccccccccccU, 0xf0f0f0f0f0f0f0f0U,
    0xff00ff00ff00ff00U, 0xffff0000ffff0000U, 0xffffffff00000000U,
};

constexpr TruthTable zeroForZero(TruthTable table)
{
    return (table & 1U) != 0 ? ~table : table;
}

/// Output 0 is the first (leftmost) of the four bits.
constexpr TruthTable outputTable(int box, int output)
{
    TruthTable table = 0;
    for (unsigned input = 0; input < 64; ++input) {
        const TruthTable bit = (substitute(box, input) >> (boxOutputBits - 1 - output)) & 1U;
        table |= bit << input;
    }
    return table;
}

/// The outputs of a box whose circuit gives the complement, as the box would answer them.
constexpr unsigned invertedOutputs(int box)
{
    return substitute(box, 0);
}

enum class GateKind : std::uint8_t
{
    And,
    AndNot,
    Or,
    Xor
};

constexpr TruthTable applyGate(GateKind kind, TruthTable a, TruthTable b)
{
    switch (kind) {
    case GateKind::And:
        return a & b;
    case GateKind::AndNot:
        return a & ~b;
    case GateKind::Or:
        return a | b;
    case GateKind::Xor:
        break;
    }
    return a ^ b;
}

/// One gate; its two inputs are nodes, that is inputs of the box (0 to 5) or earlier gates (6 on).
struct Gate
{
    GateKind kind = GateKind::And;
    std::uint8_t a = 0;
    std::uint8_t b = 0;
};

/// In which order a circuit divides the inputs and builds the outputs. Any order gives a correct
/// circuit; the number of gates depends on it.
struct BuildOrder
{
    std::array<std::uint8_t, boxInputBits> inputs;
    std::array<std::uint8_t, boxOutputBits> outputs;
};

/// The circuit of one box. It grows gate by gate; a function that is there already is used again.
class BoxCircuit
{
public:
    static constexpr std::size_t maxNodes = 96;

    constexpr BoxCircuit(int box, const BuildOrder &order)
        : m_inputOrder(order.inputs)
    {
        for (const TruthTable table : inputTables)
            append(table);
        for (const std::uint8_t output : order.outputs)
            m_outputs[output] = build(zeroForZero(outputTable(box, output)), 0);
    }

    constexpr std::size_t nodeCount() const { return m_nodeCount; }
    constexpr const Gate &gate(std::size_t index) const { return m_gates[index]; }
    constexpr std::size_t outputNode(std::size_t output) const { return m_outputs[output]; }
    constexpr TruthTable table(std::size_t node) const { return m_tables[node]; }

private:
    static constexpr std::size_t none = maxNodes;
    static constexpr std::size_t slotCount = 256;

    /// Where the search for a function starts in m_slots. Compilers limit what they work out by
    /// themselves, so that looking at every node is too slow.
    static constexpr std::size_t firstSlot(TruthTable table)
    {
        return static_cast<std::size_t>((table * 0x9e3779b97f4a7c15U) >> 56);
    }

    constexpr std::size_t find(TruthTable table) const
    {
        std::size_t slot = firstSlot(table);
        while (m_slots[slot] != 0 && m_tables[m_slots[slot] - 1U] != table)
            slot = (slot + 1) % slotCount;
        return m_slots[slot] != 0 ? m_slots[slot] - 1U : none;
    }

    constexpr std::size_t append(TruthTable table)
    {
        std::size_t slot = firstSlot(table);
        while (m_slots[slot] != 0)
            slot = (slot + 1) % slotCount;
        m_tables[m_nodeCount++] = table;
        m_slots[slot] = static_cast<std::uint8_t>(m_nodeCount);
        return m_nodeCount - 1;
    }

    constexpr std::size_t add(GateKind kind, std::size_t a, std::size_t b)
    {
        m_gates[m_nodeCount - boxInputBits]
            = {kind, static_cast<std::uint8_t>(a), static_cast<std::uint8_t>(b)};
        return append(applyGate(kind, m_tables[a], m_tables[b]));
    }

    /// A gate that makes a function out of two nodes that are there already; a is none when no
    /// gate does.
    struct Choice
    {
        GateKind kind;
        std::size_t a;
        std::size_t b;
    };

    constexpr Choice oneGate(TruthTable table) const
    {
        for (std::size_t a = 0; a < m_nodeCount; ++a) {
            const TruthTable first = m_tables[a];
            if (const std::size_t b = find(table ^ first); b != none)
                return {GateKind::Xor, a, b};
            // Only what covers the function can be ANDed to it, only what it covers ORed.
            const bool covers = (table & ~first) == 0;
            const bool covered = (first & ~table) == 0;
            for (std::size_t b = 0; (covers || covered) && b < m_nodeCount; ++b) {
                const TruthTable second = m_tables[b];
                if (covers && (first & second) == table)
                    return {GateKind::And, a, b};
                if (covers && (first & ~second) == table)
                    return {GateKind::AndNot, a, b};
                if (covered && (first | second) == table)
                    return {GateKind::Or, a, b};
            }
        }
        return {GateKind::And, none, none};
    }

    /// About how many gates a function needs, as far as a glance tells.
    constexpr int price(TruthTable table) const
    {
        constexpr int severalGates = 4;
        if (table == 0 || find(table) != none)
            return 0;
        return oneGate(table).a != none ? 1 : severalGates;
    }

    /// The function with one input held at 0 or at 1.
    static constexpr TruthTable hold(TruthTable table, std::size_t input, bool at)
    {
        const int distance = 1 << input;
        const TruthTable kept = table & (at ? inputTables[input] : ~inputTables[input]);
        return kept | (at ? kept >> distance : kept << distance);
    }

    /// The node of a function, built if need be. depth counts the inputs divided so far.
    ///
    /// f = f0 ^ (x & (f0 ^ f1)) = f1 ^ (~x & (f0 ^ f1)), where f0 and f1 are f with x held at 0
    /// and at 1. Any two of f0, f1 and their sum will do; the cheapest two are built.
    constexpr std::size_t build(TruthTable table, std::size_t depth)
    {
        if (const std::size_t known = find(table); known != none)
            return known;
        if (const Choice choice = oneGate(table); choice.a != none)
            return add(choice.kind, choice.a, choice.b);

        const std::size_t input = m_inputOrder[depth];
        const TruthTable at0 = hold(table, input, false);
        const TruthTable at1 = zeroForZero(hold(table, input, true));
        const TruthTable sum = at0 ^ at1;
        if (at0 == hold(table, input, true))
            return build(table, depth + 1);

        const int price0 = price(at0) + price(sum);
        const int price1 = price(at1) + price(sum);
        const int priceBoth = price(at0) + price(at1) + 1;
        const bool fromSum = price0 <= priceBoth || price1 <= priceBoth;
        const TruthTable base = fromSum && price1 < price0 ? at1 : at0;
        buildUnlessZero(base, depth + 1);
        if (!fromSum)
            buildUnlessZero(at1, depth + 1);
        buildUnlessZero(sum, depth + 1);
        // What is left to add to the base is a gate of the input and the sum.
        build(table ^ base, depth + 1);
        return build(table, depth + 1);
    }

    constexpr void buildUnlessZero(TruthTable table, std::size_t depth)
    {
        if (table != 0)
            build(table, depth);
    }

    std::array<std::uint8_t, boxInputBits> m_inputOrder;
    std::array<TruthTable, maxNodes> m_tables{};
    std::array<std::uint8_t, slotCount> m_slots{}; ///< hash table of node + 1, 0 when free
    std::array<Gate, maxNodes - boxInputBits> m_gates{};
    std::array<std::size_t, boxOutputBits> m_outputs{};
    std::size_t m_nodeCount = 0;
};

/// Found by trying all orders of inputs and outputs with the builder above.
inline constexpr std::array<BuildOrder, boxCount> buildOrders = {{
    {{4, 3, 5, 0, 1, 2}, {0, 3, 1, 2}}, // 68 gates
    {{4, 2, 3, 0, 1, 5}, {0, 1, 3, 2}}, // 61
    {{2, 1, 3, 0, 4, 5}, {0, 3, 1, 2}}, // 63
    {{0, 2, 4, 5, 1, 3}, {3, 1, 0, 2}}, // 41
    {{1, 5, 4, 3, 0, 2}, {0, 3, 2, 1}}, // 70
    {{2, 3, 4, 5, 0, 1}, {1, 2, 0, 3}}, // 61
    {{0, 5, 3, 1, 2, 4}, {3, 1, 2, 0}}, // 63
    {{0, 5, 1, 2, 3, 4}, {0, 2, 1, 3}}, // 56
}};

template <int box>
inline constexpr BoxCircuit boxCircuit{box, buildOrders[box]};

/// Whether the circuit of a box gives what the standard says, apart from invertedOutputs().
constexpr bool isRight(const BoxCircuit &circuit, int box)
{
    for (std::size_t output = 0; output < boxOutputBits; ++output) {
        const TruthTable wanted = outputTable(box, static_cast<int>(output));
        if (circuit.table(circuit.outputNode(output)) != zeroForZero(wanted))
            return false;
    }
    return true;
}

} // namespace seamrevision::des
