#pragma once

#include "coeffiles/plaintextdigest.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace seamrevision
{

/// A coefficient file that will be written before long, and what it will hold as it looks now.
struct ComingFile
{
    QString path;
    std::size_t plaintextBytes = 0;
    /// Writes the next count bytes of the plaintext, at most PlaintextDigest::mostPieceBytes.
    std::function<void(unsigned char *bytes, std::size_t count)> read;
};

/// The ciphertext of a file; without bytes there is none.
struct Ciphertext
{
    std::unique_ptr<unsigned char[]> bytes;
    std::size_t size = 0;
};

/// Coefficient files encrypted ahead of their writing, many side by side, which takes a fraction of
/// the time that they take one after the other.
///
/// While it lives, writeEncrypted() on the same thread asks the innermost of these objects for a
/// ciphertext of the file. It gets one only if what it is about to write is exactly what was
/// encrypted: so it does not matter whether a file became what it had looked like, or whose it is.
class PreparedFiles
{
public:
    PreparedFiles();
    ~PreparedFiles();
    PreparedFiles(const PreparedFiles &) = delete;
    PreparedFiles &operator=(const PreparedFiles &) = delete;

    /// Encrypts files ahead instead of those of before. None is where they are too few for this
    /// processor to gain by it, or where there is no memory for it.
    void prepare(const std::vector<ComingFile> &files) noexcept;

    /// Takes what the innermost object of this thread has for a file with this plaintext.
    static Ciphertext take(const QString &path, const std::vector<unsigned char> &plaintext);

private:
    struct Prepared
    {
        explicit Prepared(const PlaintextDigest::Keys &keys)
            : plaintext(keys)
        {
        }
        PlaintextDigest plaintext;
        Ciphertext ciphertext;
    };
    void encrypt(const std::vector<ComingFile> &files);

    PreparedFiles *const m_outer;
    PlaintextDigest::Keys m_keys{};
    std::map<QString, Prepared> m_files; ///< by path
};

} // namespace seamrevision
