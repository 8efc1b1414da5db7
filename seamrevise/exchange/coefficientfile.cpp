#include "exchange/coefficientfile.h"

#include <seamrevision/des.h>

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <string>

namespace seamrevise
{

namespace
{

/// Part of the file format: both the key and the initialisation vector.
const std::string keyMaterial = "qalvetor";
constexpr qint64 blockBytes = 8; ///< of the cipher

/// Reads a whole file of exactly that many bytes.
QString readBytes(const QString &path, qint64 byteCount, std::vector<unsigned char> &bytes)
{
    QFile file(path);
    if (!QFileInfo::exists(path))
        return path + QStringLiteral(": the file is missing");
    if (!QFileInfo(path).isFile()) // a pipe would be waited for
        return path + QStringLiteral(": is not a file");
    if (!file.open(QIODevice::ReadOnly))
        return path + QStringLiteral(": ") + file.errorString();
    if (file.size() != byteCount)
        return path
            + QStringLiteral(": has %1 bytes instead of %2").arg(file.size()).arg(byteCount);
    bytes.resize(static_cast<std::size_t>(byteCount));
    if (file.read(reinterpret_cast<char *>(bytes.data()), byteCount) != byteCount)
        return path + QStringLiteral(": cannot be read to its end: ") + file.errorString();
    return {};
}

QByteArray sha256Of(const std::vector<unsigned char> &bytes)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(reinterpret_cast<const char *>(bytes.data()), static_cast<int>(bytes.size()));
    return hash.result().toHex();
}

/// @param sha256  gets the hash of the file's bytes, unless it is null
QString readContent(const QString &path, qint64 contentBytes, std::vector<unsigned char> &content,
                    QByteArray *sha256 = nullptr)
{
    const QString fault = readBytes(path, encryptedBytes(contentBytes), content);
    if (!fault.isEmpty())
        return fault;
    if (sha256)
        *sha256 = sha256Of(content);
    if (!DES().DESDecrypt(keyMaterial, keyMaterial, content, content)
        || static_cast<qint64>(content.size()) != contentBytes)
        return path
            + QStringLiteral(": does not decrypt to the %1 bytes that it must hold")
                  .arg(contentBytes);
    return {};
}

template <typename Value>
QString readValues(const QString &path, qint64 valueCount, std::vector<Value> &values,
                   QByteArray *sha256 = nullptr)
{
    std::vector<unsigned char> content;
    const QString fault = readContent(path, valueCount * qint64{sizeof(Value)}, content, sha256);
    if (!fault.isEmpty())
        return fault;
    values.resize(static_cast<std::size_t>(valueCount));
    qFromLittleEndian<Value>(content.data(), valueCount, values.data());
    return {};
}

} // namespace

std::vector<CoefficientFormat> coefficientFormats(int layerCount)
{
    const QString table = QStringLiteral("coefficients.npy");
    if (layerCount == 0)
        return {{QString(), 9, 2, table}};
    return {{QStringLiteral("_m"), qint64{layerCount} * 3, 4, table},
            {QStringLiteral("_zip"), layerCount, 4, QStringLiteral("packed.bin")}};
}

qint64 encryptedBytes(qint64 contentBytes)
{
    return (contentBytes / blockBytes + 1) * blockBytes;
}

QString readCoefficientFile(const QString &path, qint64 valueCount, std::vector<quint16> &values)
{
    return readValues(path, valueCount, values);
}

QString readCoefficientFile(const QString &path, qint64 valueCount, std::vector<qint32> &values)
{
    return readValues(path, valueCount, values);
}

QString readCoefficientFile(const QString &path, qint64 valueCount, std::vector<quint32> &values)
{
    return readValues(path, valueCount, values);
}

QString readCoefficientFile(const QString &path, qint64 pixelCount, const CoefficientFormat &format,
                            std::vector<qint32> &values, QByteArray *sha256)
{
    const qint64 valueCount = pixelCount * format.valuesPerPixel;
    if (format.bytesPerValue == 4)
        return readValues(path, valueCount, values, sha256);
    std::vector<quint16> narrow;
    const QString fault = readValues(path, valueCount, narrow, sha256);
    values.assign(narrow.begin(), narrow.end());
    return fault;
}

QString decryptionFault(const QString &path, qint64 contentBytes)
{
    std::vector<unsigned char> content;
    return readContent(path, contentBytes, content);
}

} // namespace seamrevise
