#include "exchange/textreader.h"

#include "store/inventory.h"

#include <array>
#include <charconv>
#include <limits>
#include <system_error>

namespace seamrevise
{

namespace
{

constexpr int mostFaults = 10;
/// Longer than the longest line: all values of the most layers, each with sign and comma.
constexpr std::size_t lineBytes = std::size_t{valuesPerPixel(mostLayers)} * 12 + 8;

class TextReader
{
public:
    TextReader(QIODevice &file, const WantedCoefficients &wanted, Coefficients &coefficients)
        : m_file(file)
        , m_wanted(wanted)
        , m_coefficients(coefficients)
    {
    }

    QStringList read();

private:
    bool readLine();
    void takePixel();
    bool parseValues();
    bool chooseLayers();
    template <typename Value>
    void append(std::vector<Value> &values);
    void checkPixelCount();
    bool fault(const QString &text);

    QIODevice &m_file;
    const WantedCoefficients &m_wanted;
    Coefficients &m_coefficients;
    std::array<char, lineBytes> m_line{};
    const char *m_lineEnd = nullptr; ///< of its values
    qint64 m_lineNumber = 0;
    qint64 m_pixelCount = 0;
    std::vector<qint64> m_values; ///< of the line
    QStringList m_faults;
    qint64 m_faultCount = 0;
    bool m_isOver = false;
};

QStringList TextReader::read()
{
    if (!readLine() || m_lineEnd != m_line.data())
        return {QStringLiteral("it is neither a NumPy array file nor a text dump, which begins with"
                               " an empty line")};
    while (!m_isOver && readLine())
        takePixel();
    if (!m_isOver)
        checkPixelCount();
    if (m_faultCount > mostFaults)
        m_faults += QStringLiteral("%1 more lines are wrong").arg(m_faultCount - mostFaults);
    return m_faults;
}

/// The next line without its end; false after the last one, and where a line has no end.
bool TextReader::readLine()
{
    const qint64 length = m_file.readLine(m_line.data(), qint64{lineBytes});
    if (length <= 0)
        return false;
    ++m_lineNumber;
    m_lineEnd = m_line.data() + length;
    if (m_lineEnd[-1] != '\n') {
        m_isOver = true;
        return fault(m_file.atEnd() ? QStringLiteral("it has no end; the file was cut short")
                                    : QStringLiteral("it is longer than any pixel's"));
    }
    --m_lineEnd;
    if (m_lineEnd != m_line.data() && m_lineEnd[-1] == '\r')
        --m_lineEnd;
    return true;
}

void TextReader::takePixel()
{
    const bool isFirst = ++m_pixelCount == 1;
    const bool isParsed = parseValues();
    if (isFirst && (!isParsed || !chooseLayers())) {
        m_isOver = true; // what the lines must look like is not known
        return;
    }
    if (!isParsed || m_pixelCount > m_wanted.rows * m_wanted.columns)
        return;
    const int layerCount = m_coefficients.layerCount;
    if (m_values.size() != static_cast<std::size_t>(valuesPerPixel(layerCount)))
        fault(QStringLiteral("it has %1 values, the lines before %2")
                  .arg(m_values.size())
                  .arg(valuesPerPixel(layerCount)));
    else if (layerCount == 0)
        append(m_coefficients.single);
    else
        append(m_coefficients.layered);
}

bool TextReader::parseValues()
{
    m_values.clear();
    for (const char *next = m_line.data(); next != m_lineEnd;) {
        qint64 value = 0;
        const auto [end, error] = std::from_chars(next, m_lineEnd, value);
        if (error != std::errc() || end == m_lineEnd || *end != ',')
            return fault(QStringLiteral("value %1 is no whole number with a comma behind it")
                             .arg(m_values.size() + 1));
        m_values.push_back(value);
        next = end + 1;
    }
    return true;
}

bool TextReader::chooseLayers()
{
    const auto count = static_cast<qint64>(m_values.size());
    if (!isLayeredCount(count))
        return fault(QStringLiteral("it has %1 values; a single layer has 9, 1 to %2 layers have 3"
                                    " each")
                         .arg(count)
                         .arg(mostLayers));
    const bool isSingle = count == 9 && m_wanted.layerCount != 3;
    const int layerCount = isSingle ? 0 : static_cast<int>(count / 3);
    m_coefficients.layerCount = layerCount;
    if (m_wanted.layerCount.value_or(layerCount) != layerCount)
        return fault(otherKindText(layerCount, *m_wanted.layerCount));
    return m_wanted.rows * m_wanted.columns <= largestZoneBytes / storedPixelBytes(layerCount)
        || fault(QStringLiteral("the zone is larger than one database value holds"));
}

template <typename Value>
void TextReader::append(std::vector<Value> &values)
{
    constexpr qint64 least = std::numeric_limits<Value>::min();
    constexpr qint64 most = std::numeric_limits<Value>::max();
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        if (m_values[i] < least || m_values[i] > most) {
            fault(QStringLiteral("value %1 is %2, which is not from %3 to %4")
                      .arg(i + 1)
                      .arg(m_values[i])
                      .arg(least)
                      .arg(most));
            return;
        }
        values.push_back(static_cast<Value>(m_values[i]));
    }
}

void TextReader::checkPixelCount()
{
    if (m_pixelCount != m_wanted.rows * m_wanted.columns)
        m_faults += QStringLiteral("it has %1 pixels, the zone %2 rows of %3")
                        .arg(m_pixelCount)
                        .arg(m_wanted.rows)
                        .arg(m_wanted.columns);
}

/// A mistake in the current line; false.
bool TextReader::fault(const QString &text)
{
    if (++m_faultCount <= mostFaults)
        m_faults += QStringLiteral("line %1: ").arg(m_lineNumber) + text;
    return false;
}

} // namespace

QStringList readText(QIODevice &file, const WantedCoefficients &wanted, Coefficients &coefficients)
{
    coefficients = Coefficients();
    return TextReader(file, wanted, coefficients).read();
}

} // namespace seamrevise
