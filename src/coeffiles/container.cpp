#include "coeffiles/container.h"

#include "seamrevision/des.h"

#include <QDir>
#include <QFile>

#include <algorithm>
#include <string>

namespace seamrevision
{

namespace
{

/// Part of the file format: both the key and the initialisation vector.
const std::string &keyMaterial()
{
    static const std::string key = "qalvetor";
    return key;
}

} // namespace

bool ensureDirectory(const QString &directory)
{
    const QDir dir(directory);
    return dir.exists() || dir.mkpath(directory);
}

bool writeEncrypted(const QString &path, const std::vector<unsigned char> &plaintext)
{
    std::vector<unsigned char> ciphertext;
    DES().DESEncrypt(keyMaterial(), keyMaterial(), plaintext, ciphertext);

    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const auto fileBytes = static_cast<qint64>(ciphertext.size());
    file.write(reinterpret_cast<const char *>(ciphertext.data()), fileBytes);
    file.flush();
    const bool isWhole = file.error() == QFileDevice::NoError && file.size() == fileBytes;
    file.close(); // which forgets an error of before, and may meet one of its own
    return isWhole && file.error() == QFileDevice::NoError;
}

bool readDecrypted(const QString &path, std::vector<unsigned char> &plaintext)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    std::vector<unsigned char> ciphertext(static_cast<std::size_t>(file.size()));
    const qint64 readBytes = file.read(reinterpret_cast<char *>(ciphertext.data()), file.size());
    ciphertext.resize(static_cast<std::size_t>(std::max<qint64>(0, readBytes)));

    DES().DESDecrypt(keyMaterial(), keyMaterial(), ciphertext, plaintext);
    return true;
}

} // namespace seamrevision
