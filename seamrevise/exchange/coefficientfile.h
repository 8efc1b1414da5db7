#pragma once

#include <QString>
#include <QtGlobal>

#include <vector>

/// The encrypted coefficient files of a partition, read without an engine. docs/file-format.md
/// describes them byte by byte.
namespace seamrevise
{

/// One of the files that a partition has, and how its values lie in it.
struct CoefficientFormat
{
    QString suffix;        ///< what follows the partition's number in the file's name
    qint64 valuesPerPixel; ///< nine, or 3 or 1 for each layer
    qint64 bytesPerValue;  ///< 2: unsigned; 4: signed, or the words of packed codes
    QString tableName;     ///< the file that holds these values of the whole screen instead

    qint64 bytesPerPixel() const { return valuesPerPixel * bytesPerValue; }
    /// Of a partition.
    QString fileName(int number) const { return QString::number(number) + suffix; }
};

/// The files of a partition: of nine values a pixel if layerCount is 0, else of layered values and
/// of packed words. The first one holds the values as revised.
std::vector<CoefficientFormat> coefficientFormats(int layerCount);

/// Bytes of a coefficient file with that much content: whole blocks, the last one padded.
qint64 encryptedBytes(qint64 contentBytes);

/// Deciphers and decodes a file that must hold that many values and nothing else. Empty, or what
/// is wrong with the file's name; then values are unspecified.
QString readCoefficientFile(const QString &path, qint64 valueCount, std::vector<quint16> &values);
QString readCoefficientFile(const QString &path, qint64 valueCount, std::vector<qint32> &values);
QString readCoefficientFile(const QString &path, qint64 valueCount, std::vector<quint32> &values);

/// The same for a file of any format; packed words are the same 32 bits.
/// @param sha256  gets the hash of the bytes that were read, in hexadecimal digits, unless null
QString readCoefficientFile(const QString &path, qint64 pixelCount, const CoefficientFormat &format,
                            std::vector<qint32> &values, QByteArray *sha256 = nullptr);

/// Whether a file deciphers to that many bytes, whatever they are. Empty, or what is wrong with the
/// file's name.
QString decryptionFault(const QString &path, qint64 contentBytes);

} // namespace seamrevise
