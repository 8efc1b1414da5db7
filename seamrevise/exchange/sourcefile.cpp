#include "exchange/sourcefile.h"

#include "exchange/npyheader.h"
#include "exchange/npyreader.h"
#include "exchange/npywriter.h"
#include "exchange/textreader.h"

#include <QFile>
#include <QFileInfo>

#include <charconv>

namespace seamrevise
{

namespace
{

/// The lines of a text dump, whose values are each followed by a comma.
template <typename Value>
bool sendText(const std::vector<Value> &values, std::size_t lineValues, const BlockSink &sink)
{
    constexpr std::size_t blockBytes = std::size_t{1} << 16;
    constexpr std::size_t longestValue = 16; // with its comma and an end of line
    std::vector<char> block(blockBytes);
    char *next = block.data();
    char *const last = next + blockBytes - longestValue;
    const auto endLine = [&next] {
        *next++ = '\r';
        *next++ = '\n';
    };
    endLine();
    for (std::size_t i = 0; i < values.size(); ++i) {
        next = std::to_chars(next, block.data() + blockBytes, values[i]).ptr;
        *next++ = ',';
        if ((i + 1) % lineValues == 0)
            endLine();
        if (next > last) {
            if (!sink(block.data(), next - block.data()))
                return false;
            next = block.data();
        }
    }
    return sink(block.data(), next - block.data());
}

template <typename Value>
QString writeValues(const QString &path, SourceFormat format, const NQRect &zone,
                    const std::vector<Value> &values, int pixelValues)
{
    if (format == SourceFormat::Text)
        return writeChecked(path, [&](const BlockSink &sink) {
            return sendText(values, static_cast<std::size_t>(pixelValues), sink);
        });
    return writeNpy(path, sizeof(Value) == 2 ? "<u2" : "<i4",
                    {rowsOf(zone), columnsOf(zone), pixelValues},
                    [&](const BlockSink &sink) { return sendLittleEndian(values, sink); });
}

} // namespace

QStringList readSource(const QString &path, const WantedCoefficients &wanted,
                       Coefficients &coefficients)
{
    if (QFileInfo(path).isDir())
        return {QStringLiteral("it is a directory")};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {file.errorString()};
    const QByteArray start = file.peek(npyMagicBytes);
    if (start == npyMagic)
        return readNpy(file, wanted, coefficients);
    if (start.startsWith("PK"))
        return {QStringLiteral("it is an archive; take the array out of it, or save it with"
                               " numpy.save")};
    return readText(file, wanted, coefficients);
}

QString writeSource(const QString &path, SourceFormat format, const NQRect &zone,
                    const Coefficients &coefficients)
{
    const int pixelValues = valuesPerPixel(coefficients.layerCount);
    return coefficients.layerCount == 0
        ? writeValues(path, format, zone, coefficients.single, pixelValues)
        : writeValues(path, format, zone, coefficients.layered, pixelValues);
}

} // namespace seamrevise
