#include "coeffiles/textdump.h"

#include "seamrevision/funcrunningstate.h"
#include "seamrevision/localconfig.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>

namespace
{

/// The decimal text of a number below 10000, which almost every coefficient is.
struct ShortText
{
    char characters[4];
    unsigned char length;
};

constexpr std::size_t shortTextCount = 10000;

constexpr std::array<ShortText, shortTextCount> makeShortTexts()
{
    std::array<ShortText, shortTextCount> texts{};
    for (std::size_t number = 0; number < shortTextCount; ++number) {
        ShortText &text = texts[number];
        for (std::size_t scale = shortTextCount / 10; scale > 0; scale /= 10) {
            if (number >= scale || scale == 1)
                text.characters[text.length++] = static_cast<char>('0' + number / scale % 10);
        }
    }
    return texts;
}

constexpr std::array<ShortText, shortTextCount> shortTexts = makeShortTexts();

/// Formats values into a large block and hands full blocks to the file.
class DumpWriter
{
public:
    DumpWriter(QFile &file, const QString &separator)
        : m_file(file)
        , m_separator(separator.toLocal8Bit())
        , m_block(blockBytes + longestValue + separatorBytes())
    {
    }
    DumpWriter(const DumpWriter &) = delete;
    DumpWriter &operator=(const DumpWriter &) = delete;
    ~DumpWriter() = default;

    void headerLine(const QString &header)
    {
        m_file.write(header.toLocal8Bit());
        endLine();
    }

    template <typename Value>
    void line(const Value *values, std::size_t valueCount)
    {
        std::for_each(values, values + valueCount, [this](Value value) { append(value); });
        endLine();
    }

    /// Hands what is left to the file. Not the destructor's work: the file may throw.
    void flush()
    {
        m_file.write(m_block.data(), static_cast<qint64>(m_used));
        m_used = 0;
    }

private:
    static constexpr std::size_t blockBytes = std::size_t{256} * 1024;
    /// A sign and ten digits, or the end of a line.
    static constexpr std::size_t longestValue = std::numeric_limits<int>::digits10 + 2;

    std::size_t separatorBytes() const { return static_cast<std::size_t>(m_separator.size()); }

    void append(int value)
    {
        char *end = m_block.data() + m_used;
        if (value >= 0 && static_cast<std::size_t>(value) < shortTextCount) {
            const ShortText &text = shortTexts[static_cast<std::size_t>(value)];
            std::memcpy(end, text.characters, sizeof text.characters);
            end += text.length;
        } else {
            end = std::to_chars(end, end + longestValue, value).ptr;
        }
        // Copying a length that is known only now costs more than the digits; most are of one byte.
        if (separatorBytes() == 1)
            *end++ = m_separator.constData()[0];
        else
            end = std::copy_n(m_separator.constData(), separatorBytes(), end);
        advanceTo(end);
    }

    void endLine()
    {
        char *const end = m_block.data() + m_used;
        end[0] = '\r';
        end[1] = '\n';
        advanceTo(end + 2);
    }

    void advanceTo(const char *end)
    {
        m_used = static_cast<std::size_t>(end - m_block.data());
        if (m_used >= blockBytes)
            flush();
    }

    QFile &m_file;
    const QByteArray m_separator;
    std::vector<char> m_block;
    std::size_t m_used = 0;
};

/// Opens a dump, writes its header and lets the caller write the lines.
template <typename WriteLines>
QString writeDump(const QString &fileName, const QString &separator, const QString &header,
                  WriteLines writeLines)
{
    if (!LocalConfig::getInstance().isExportData())
        return QString();
    const FuncRunningState running(QStringLiteral("outData"));
    const QString path = LocalConfig::getInstance().exportDataDir() + QLatin1Char('/') + fileName;
    QFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        DumpWriter writer(file, separator);
        writer.headerLine(header);
        writeLines(writer);
        writer.flush();
    }
    return path;
}

template <typename Value>
void writeLines(DumpWriter &writer, const std::vector<Value> &data, int valuesPerLine)
{
    if (valuesPerLine < 1)
        return;
    const auto lineLength = static_cast<std::size_t>(valuesPerLine);
    for (std::size_t first = 0; first < data.size(); first += lineLength)
        writer.line(data.data() + first, std::min(lineLength, data.size() - first));
}

} // namespace

QString outData(const std::vector<unsigned short> &data, const QString &fileName,
                const QString &separator, int valuesPerLine, QString header)
{
    return writeDump(fileName, separator, header,
                     [&](DumpWriter &writer) { writeLines(writer, data, valuesPerLine); });
}

QString outData(const std::vector<unsigned char> &data, const QString &fileName,
                const QString &separator, int valuesPerLine, QString header)
{
    return writeDump(fileName, separator, header,
                     [&](DumpWriter &writer) { writeLines(writer, data, valuesPerLine); });
}

QString outData(const std::vector<std::vector<int>> &data, const QString &fileName,
                const QString &separator, QString header)
{
    return writeDump(fileName, separator, header, [&](DumpWriter &writer) {
        for (const std::vector<int> &row : data)
            writer.line(row.data(), row.size());
    });
}
