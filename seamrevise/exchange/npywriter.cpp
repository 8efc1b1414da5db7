#include "exchange/npywriter.h"

#include "exchange/npyheader.h"

#include <QByteArrayList>

namespace seamrevise
{

namespace
{

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

    QByteArray header(npyMagic, npyMagicBytes);
    header += QByteArray("\x01\x00", 2); // the version
    header += static_cast<char>(text.size() & 0xFF);
    header += static_cast<char>(text.size() >> 8);
    return header + text;
}

} // namespace

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
