#include "coeffiles/plaintextdigest.h"

#include <algorithm>
#include <cstring>
#include <random>

namespace seamrevision
{

namespace
{

__extension__ using Wide = unsigned __int128;

constexpr std::size_t pairBytes = 2 * sizeof(quint64);

/// The product of the two words at bytes and their keys.
Wide product(const unsigned char *bytes, const quint64 *keys)
{
    quint64 words[2];
    std::memcpy(words, bytes, sizeof words);
    return Wide{words[0] + keys[0]} * (words[1] + keys[1]);
}

} // namespace

PlaintextDigest::Keys PlaintextDigest::randomKeys()
{
    std::mt19937_64 random(std::random_device{}());
    Keys keys;
    std::generate(keys.begin(), keys.end(), random);
    return keys;
}

PlaintextDigest::Piece PlaintextDigest::digest(const unsigned char *bytes, std::size_t count) const
{
    Wide sum = 0;
    std::size_t done = 0;
    const quint64 *keys = m_keys.data();
    for (; done + pairBytes <= count; done += pairBytes, keys += 2)
        sum += product(bytes + done, keys);
    if (done < count) { // filled up with zeros; the size tells them from others
        unsigned char rest[pairBytes] = {};
        std::copy_n(bytes + done, count - done, rest);
        sum += product(rest, keys);
    }
    return {count, static_cast<quint64>(sum), static_cast<quint64>(sum >> 64)};
}

void PlaintextDigest::add(const unsigned char *bytes, std::size_t count)
{
    m_pieces.push_back(digest(bytes, count));
}

bool PlaintextDigest::isOf(const std::vector<unsigned char> &plaintext) const
{
    std::size_t done = 0;
    for (const Piece &piece : m_pieces) {
        if (piece.size > plaintext.size() - done)
            return false;
        const Piece found = digest(plaintext.data() + done, piece.size);
        if (found.low != piece.low || found.high != piece.high)
            return false;
        done += piece.size;
    }
    return done == plaintext.size();
}

} // namespace seamrevision
