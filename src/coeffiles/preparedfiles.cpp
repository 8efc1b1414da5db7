#include "coeffiles/preparedfiles.h"

#include "cipher/chains.h"
#include "coeffiles/filekey.h"

#include <utility>

namespace seamrevision
{

namespace
{

/// A host may run a revision from within another one: each has its own object.
PreparedFiles *&innermost()
{
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): it is the thread's own
    thread_local PreparedFiles *object = nullptr;
    return object;
}

const unsigned char *keyBytes()
{
    return reinterpret_cast<const unsigned char *>(fileKey);
}

} // namespace

PreparedFiles::PreparedFiles()
    : m_outer(std::exchange(innermost(), this))
{
}

PreparedFiles::~PreparedFiles()
{
    innermost() = m_outer;
}

void PreparedFiles::prepare(const std::vector<ComingFile> &files) noexcept
{
    m_files.clear();
    const des::LaneKernel *const kernel = des::laneKernel();
    if (!kernel || files.size() < kernel->worthwhileLanes)
        return;
    try {
        encrypt(files);
    } catch (...) { // the files are encrypted when they are written
        m_files.clear();
    }
}

void PreparedFiles::encrypt(const std::vector<ComingFile> &files)
{
    m_keys = PlaintextDigest::randomKeys();
    std::vector<des::Chain> chains;
    for (const ComingFile &file : files) {
        Prepared &prepared = m_files.try_emplace(file.path, m_keys).first->second;
        Ciphertext &ciphertext = prepared.ciphertext;
        ciphertext.size = des::paddedSize(file.plaintextBytes);
        ciphertext.bytes.reset(new unsigned char[ciphertext.size]); // without zeros first
        const auto read = [&file, &prepared](unsigned char *bytes, std::size_t count) {
            file.read(bytes, count);
            prepared.plaintext.add(bytes, count);
        };
        chains.push_back({file.plaintextBytes, read, ciphertext.bytes.get()});
    }
    des::encryptChains(des::keySchedule(keyBytes()), des::loadBlock(keyBytes()), chains);
}

Ciphertext PreparedFiles::take(const QString &path, const std::vector<unsigned char> &plaintext)
{
    if (!innermost())
        return {};
    const auto found = innermost()->m_files.find(path);
    if (found == innermost()->m_files.end())
        return {};
    Prepared prepared = std::move(found->second);
    innermost()->m_files.erase(found);
    return prepared.plaintext.isOf(plaintext) ? std::move(prepared.ciphertext) : Ciphertext();
}

} // namespace seamrevision
