#include "exchange/npywriter.h"

#include <QByteArrayList>
#include <QFile>
#include <QSaveFile>

#include <cstring>

namespace seamrevise
{

namespace
{

bool isSame(const QString &path, const BlockSource &source)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && source([&](const char *bytes, qint64 count) {
               const QByteArray written = file.read(count);
               return written.size() == count
                   && std::memcmp(written.constData(), bytes, static_cast<std::size_t>(count)) == 0;
           })
        && file.atEnd();
}

QByteArray npyHeader(const QByteArray &descr, const std::vector<qint64> &shape)
{
    QByteArrayList sides;
    for (const qint64 side : shape)
        sides += QByteArray::number(side);
    QByteArray text = "{'descr': '" + descr + "', 'fortran_order': False, 'shape': ("
        + sides.join(", ") + "), }";
    constexpr int fixedBytes = 10; // magic, version, length of the text
    constexpr int alignment = 64;
    while ((fixedBytes + text.size() + 1) % alignment != 0)
        text += ' ';
    text += '\n';

    QByteArray header("\x93NUMPY\x01\x00", 8);
    header += static_cast<char>(text.size() & 0xFF);
    header += static_cast<char>(text.size() >> 8);
    return header + text;
}

} // namespace

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

QString comparisonFault(const QString &path, const BlockSource &source)
{
    return isSame(path, source) ? QString()
                                : path + QStringLiteral(": it was written but reads differently");
}

QString writeChecked(const QString &path, const BlockSource &source)
{
    const QString fault = writeWhole(path, source);
    return fault.isEmpty() ? comparisonFault(path, source) : fault;
}

BlockSource npyBytes(const QByteArray &descr, const std::vector<qint64> &shape,
                     const BlockSource &values)
{
    return [header = npyHeader(descr, shape), values](const BlockSink &sink) {
        return sink(header.constData(), header.size()) && values(sink);
    };
}

QString writeNpy(const QString &path, const QByteArray &descr, const std::vector<qint64> &shape,
                 const BlockSource &values)
{
    return writeChecked(path, npyBytes(descr, shape, values));
}

} // namespace seamrevise
