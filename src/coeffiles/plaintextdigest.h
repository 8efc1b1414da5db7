#pragma once

#include <QtGlobal>

#include <array>
#include <cstddef>
#include <vector>

namespace seamrevision
{

/// Remembers what a plaintext was, in a hundredth of its size, to tell later whether another one is
/// the same.
///
/// The digest of a piece is the sum of the products of its neighbouring words, to each of which a
/// random key was added first, in 128 bits (NH, of the message authentication code UMAC). Whatever
/// two pieces of a length are, if they differ their digests are alike with a chance of 2^-64.
class PlaintextDigest
{
public:
    static constexpr std::size_t mostPieceBytes = 2048;
    using Keys = std::array<quint64, mostPieceBytes / sizeof(quint64)>;

    static Keys randomKeys();

    /// The keys must outlive it.
    explicit PlaintextDigest(const Keys &keys)
        : m_keys(keys)
    {
    }

    /// Takes the next piece of the plaintext, of at most mostPieceBytes.
    void add(const unsigned char *bytes, std::size_t count);

    /// Whether a plaintext is made of exactly the pieces that were added.
    bool isOf(const std::vector<unsigned char> &plaintext) const;

private:
    struct Piece
    {
        std::size_t size;
        quint64 low;
        quint64 high;
    };
    Piece digest(const unsigned char *bytes, std::size_t count) const;

    const Keys &m_keys;
    std::vector<Piece> m_pieces;
};

} // namespace seamrevision
