#pragma once

#include "cipher/cbc.h"

#include <algorithm>
#include <cstddef>

/// The padding of RFC 5652, section 6.3: one to eight bytes, each of which tells their number.
namespace seamrevision::des
{

/// The size of a message with its padding.
constexpr std::size_t paddedSize(std::size_t messageSize)
{
    return (messageSize / blockBytes + 1) * blockBytes;
}

/// Puts the padding behind the end of a message, of which size bytes are at hand.
inline void appendPadding(unsigned char *message, std::size_t size)
{
    const std::size_t count = paddedSize(size) - size;
    std::fill_n(message + size, count, static_cast<unsigned char>(count));
}

/// How many bytes of padding end the last block, 0 when it is not padding.
inline std::size_t paddingOf(const unsigned char *lastBlock)
{
    const std::size_t count = lastBlock[blockBytes - 1];
    if (count == 0 || count > blockBytes)
        return 0;
    const bool alike = std::all_of(lastBlock + blockBytes - count, lastBlock + blockBytes,
                                   [count](unsigned char byte) { return byte == count; });
    return alike ? count : 0;
}

} // namespace seamrevision::des
