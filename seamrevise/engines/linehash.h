#pragma once

#include <QtGlobal>

#include <cstddef>
#include <cstring>

namespace seamrevise
{

/// A 64-bit hash that tells whether a line of values is still the same; it guards against faults,
/// not against forgery. Pass the hash of what came before to go on with a line.
inline quint64 lineHash(quint64 hash, const void *bytes, std::size_t count)
{
    constexpr quint64 odd = 0x9E3779B97F4A7C15U;
    const auto mix = [&hash](quint64 word) {
        hash = (hash ^ word) * odd;
        hash ^= hash >> 32;
    };
    const auto *next = static_cast<const unsigned char *>(bytes);
    for (; count >= sizeof(quint64); count -= sizeof(quint64), next += sizeof(quint64)) {
        quint64 word = 0;
        std::memcpy(&word, next, sizeof word);
        mix(word);
    }
    quint64 rest = count;
    std::memcpy(&rest, next, count);
    mix(rest);
    return hash;
}

} // namespace seamrevise
