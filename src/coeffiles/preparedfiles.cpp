#include "coeffiles/preparedfiles.h"

#include "cipher/bitslice.h"
#include "cipher/chains.h"
#include "coeffiles/filekey.h"

#include <algorithm>
#include <utility>

namespace seamrevision
{

namespace
{

/// A host may run a revision from within another one: each has its own object.
thread_local PreparedFiles *innermost = nullptr;

const unsigned char *keyBytes()
{
    return reinterpret_cast<const unsigned char *>(fileKey);
}

/// Whether a run of bytes is the rest of a message and its padding.
bool isEndOfMessage(const unsigned char *bytes, std::size_t size, const unsigned char *message,
                    std::size_t messageSize)
{
    return std::equal(message, message + messageSize, bytes)
        && std::all_of(bytes + messageSize, bytes + size,
                       [&](unsigned char byte) { return byte == size - messageSize; });
}

/// Whether a ciphertext is that of a plaintext. It is deciphered to find out, which no change of
/// the plaintext can escape and which, unlike enciphering, goes many blocks at a time.
bool isCiphertextOf(const std::vector<unsigned char> &plaintext, const Ciphertext &ciphertext)
{
    using namespace des;
    constexpr std::size_t pieceBytes = 2048 * blockBytes;
    if (ciphertext.size != paddedSize(plaintext.size()))
        return false;
    const KeySchedule keys = keySchedule(keyBytes());
    Block vector = loadBlock(keyBytes());
    unsigned char piece[pieceBytes];
    for (std::size_t done = 0; done < ciphertext.size; done += pieceBytes) {
        const unsigned char *const from = ciphertext.bytes.get() + done;
        const std::size_t size = std::min(pieceBytes, ciphertext.size - done);
        decryptCbcFor(size / blockBytes)(keys, vector, from, piece, size / blockBytes);
        const std::size_t messageSize = std::min(size, plaintext.size() - done);
        if (!isEndOfMessage(piece, size, plaintext.data() + done, messageSize))
            return false;
        vector = loadBlock(from + size - blockBytes);
    }
    return true;
}

/// Encrypts files side by side.
std::map<QString, Ciphertext> encrypted(const std::vector<ComingFile> &files)
{
    std::map<QString, Ciphertext> ciphertexts;
    std::vector<des::Chain> chains;
    for (const ComingFile &file : files) {
        Ciphertext &ciphertext = ciphertexts[file.path];
        ciphertext.size = des::paddedSize(file.plaintextBytes);
        ciphertext.bytes.reset(new unsigned char[ciphertext.size]); // without zeros first
        chains.push_back({file.plaintextBytes, file.read, ciphertext.bytes.get()});
    }
    des::encryptChains(des::keySchedule(keyBytes()), des::loadBlock(keyBytes()), chains);
    return ciphertexts;
}

} // namespace

PreparedFiles::PreparedFiles()
    : m_outer(std::exchange(innermost, this))
{
}

PreparedFiles::~PreparedFiles()
{
    innermost = m_outer;
}

void PreparedFiles::prepare(const std::vector<ComingFile> &files) noexcept
{
    m_ciphertexts.clear();
    const des::LaneKernel *const kernel = des::laneKernel();
    if (!kernel || files.size() < kernel->worthwhileLanes)
        return;
    try {
        m_ciphertexts = encrypted(files);
    } catch (...) { // the files are encrypted when they are written
    }
}

Ciphertext PreparedFiles::take(const QString &path, const std::vector<unsigned char> &plaintext)
{
    if (!innermost)
        return {};
    const auto found = innermost->m_ciphertexts.find(path);
    if (found == innermost->m_ciphertexts.end())
        return {};
    Ciphertext ciphertext = std::move(found->second);
    innermost->m_ciphertexts.erase(found);
    return isCiphertextOf(plaintext, ciphertext) ? std::move(ciphertext) : Ciphertext();
}

} // namespace seamrevision
