#include "exchange/blockfile.h"

#include <QCryptographicHash>
#include <QFile>
#include <QSaveFile>

#include <cstring>

namespace seamrevise
{

QString writeWhole(const QString &path, const BlockSource &source)
{
    QSaveFile file(path);
    // What is written in part only fails at its rest, which tells the cause.
    const auto write = [&](const char *bytes, qint64 count) {
        qint64 written = 0;
        for (qint64 done = 0; done < count && written >= 0; done += written)
            written = file.write(bytes + done, count - done);
        return written >= 0;
    };
    if (!file.open(QIODevice::WriteOnly))
        return path + QStringLiteral(": ") + file.errorString();
    if (!source(write) || !file.flush() || !file.commit()) // closing would forget the cause
        return path + QStringLiteral(": ") + file.errorString();
    return {};
}

QString comparisonFault(const QString &path, const BlockSource &source, QByteArray *sha256)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const bool isSame
        = file.open(QIODevice::ReadOnly) && source([&](const char *bytes, qint64 count) {
              const QByteArray written = file.read(count);
              if (sha256)
                  hash.addData(written);
              return written.size() == count
                  && std::memcmp(written.constData(), bytes, static_cast<std::size_t>(count)) == 0;
          })
        && file.atEnd();
    if (sha256)
        *sha256 = hash.result().toHex();
    return isSame ? QString() : path + QStringLiteral(": it was written but reads differently");
}

QString writeChecked(const QString &path, const BlockSource &source)
{
    const QString fault = writeWhole(path, source);
    return fault.isEmpty() ? comparisonFault(path, source) : fault;
}

} // namespace seamrevise
