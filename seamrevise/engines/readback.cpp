#include "engines/readback.h"

#include <QFile>
#include <QFileInfo>

namespace seamrevise
{

namespace
{

/// Bytes of a file: the cipher's blocks of 8, of which padding fills the last and is never absent.
qint64 paddedBytes(qint64 plainBytes)
{
    return (plainBytes / 8 + 1) * 8;
}

QString sizeFault(const QString &path, qint64 expectedBytes)
{
    const QFileInfo file(path);
    if (!file.isFile())
        return path + QStringLiteral(": the file is missing");
    if (file.size() != expectedBytes)
        return path
            + QStringLiteral(": %1 bytes were written instead of %2; is the disk full?")
                  .arg(file.size())
                  .arg(expectedBytes);
    return {};
}

} // namespace

QString checkFiles(CoefKind &kind, const QString &dir, int number, const NQRect &partition,
                   bool isCorrected)
{
    const QString key = QString::number(number);
    const QString path = dir + QLatin1Char('/') + key;
    for (const CoefKind::FileKind &file : kind.fileKinds()) {
        QString fault
            = sizeFault(path + file.suffix, paddedBytes(pixelsOf(partition) * file.bytesPerPixel));
        if (!fault.isEmpty())
            return fault;
    }
    if (!kind.readFiles(dir, key, pixelsOf(partition)))
        return path + QStringLiteral(": it was written but cannot be read back");

    for (int row = partition.top(); row <= partition.bottom(); ++row) {
        for (int col = partition.left(); col <= partition.right(); ++col) {
            const std::size_t pixel = pixelIndex(partition, row, col);
            const bool isRight = isCorrected
                ? kind.isResult(pixel, pixelIndex(kind.result().rect, row, col))
                : kind.isNeutral(pixel);
            if (!isRight)
                return path
                    + QStringLiteral(": it reads back differently at row %1, column %2")
                          .arg(row)
                          .arg(col);
        }
    }
    return {};
}

bool isWholeDump(const QString &path)
{
    // Every dump ends in a line's end, also one without values.
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.size() >= 2 && file.seek(file.size() - 2)
        && file.read(2) == "\r\n";
}

} // namespace seamrevise
