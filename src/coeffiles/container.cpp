#include "coeffiles/container.h"

#include "coeffiles/filekey.h"
#include "coeffiles/preparedfiles.h"
#include "seamrevision/des.h"

#include <QDir>
#include <QFile>

#include <algorithm>

namespace seamrevision
{

namespace
{

bool writeWhole(const QString &path, const unsigned char *bytes, std::size_t size)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const auto fileBytes = static_cast<qint64>(size);
    file.write(reinterpret_cast<const char *>(bytes), fileBytes);
    file.flush();
    const bool isWhole = file.error() == QFileDevice::NoError && file.size() == fileBytes;
    file.close(); // which forgets an error of before, and may meet one of its own
    return isWhole && file.error() == QFileDevice::NoError;
}

} // namespace

bool ensureDirectory(const QString &directory)
{
    const QDir dir(directory);
    return dir.exists() || dir.mkpath(directory);
}

bool writeEncrypted(const QString &path, const std::vector<unsigned char> &plaintext)
{
    const Ciphertext prepared = PreparedFiles::take(path, plaintext);
    if (prepared.bytes)
        return writeWhole(path, prepared.bytes.get(), prepared.size);
    std::vector<unsigned char> ciphertext;
    DES().DESEncrypt(fileKey, fileKey, plaintext, ciphertext);
    return writeWhole(path, ciphertext.data(), ciphertext.size());
}

bool readDecrypted(const QString &path, std::vector<unsigned char> &plaintext)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    std::vector<unsigned char> ciphertext(static_cast<std::size_t>(file.size()));
    const qint64 readBytes = file.read(reinterpret_cast<char *>(ciphertext.data()), file.size());
    ciphertext.resize(static_cast<std::size_t>(std::max<qint64>(0, readBytes)));

    DES().DESDecrypt(fileKey, fileKey, ciphertext, plaintext);
    return true;
}

} // namespace seamrevision
