#include "exchange/dumpcheck.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace seamrevise
{

namespace
{

/// Takes a dump's bytes in their order and notes whether they are those of a shape.
class DumpScanner
{
public:
    explicit DumpScanner(const DumpShape &shape)
        : m_shape(shape)
    {
    }

    /// False as soon as a line is wrong.
    bool take(const QByteArray &bytes)
    {
        return std::all_of(bytes.begin(), bytes.end(),
                           [this](char letter) { return take(letter); });
    }
    bool isWhole() const { return m_lines == m_shape.lines + 1 && m_isLineStart; }
    qint64 line() const { return m_lines + 1; }

private:
    bool take(char letter)
    {
        m_isLineStart = false;
        if (letter >= '0' && letter <= '9') {
            m_hasDigit = true;
            return !m_hasReturn;
        }
        switch (letter) {
        case '-':
            return !m_hasDigit && !m_hasReturn;
        case ',':
            ++m_values;
            return takeValue();
        case '\r':
            return !std::exchange(m_hasReturn, true);
        case '\n':
            return takeLine();
        default:
            return false;
        }
    }
    bool takeValue() { return std::exchange(m_hasDigit, false) && !m_hasReturn; }
    /// The first line is empty.
    bool takeLine()
    {
        const bool isNumberAlone = m_hasDigit && m_values == 0;
        const bool isRight = m_lines == 0 ? !m_hasDigit && m_values == 0
            : m_shape.valuesPerLine == 0  ? isNumberAlone
                                          : !m_hasDigit && m_values == m_shape.valuesPerLine;
        ++m_lines;
        m_values = 0;
        m_hasDigit = false;
        m_isLineStart = true;
        return std::exchange(m_hasReturn, false) && isRight && m_lines <= m_shape.lines + 1;
    }

    const DumpShape m_shape;
    qint64 m_lines = 0;
    qint64 m_values = 0;
    bool m_hasDigit = false;
    bool m_hasReturn = false;
    bool m_isLineStart = true;
};

} // namespace

QString dumpFault(const QString &path, const DumpShape &shape)
{
    constexpr qint64 blockBytes = qint64{256} * 1024;
    QFile file(path);
    if (!QFileInfo(path).isFile()) // a pipe would be waited for
        return path + QStringLiteral(": the dump is missing");
    if (!file.open(QIODevice::ReadOnly))
        return path + QStringLiteral(": ") + file.errorString();
    DumpScanner scanner(shape);
    bool isRight = true;
    while (isRight && !file.atEnd())
        isRight = file.error() == QFileDevice::NoError && scanner.take(file.read(blockBytes));
    if (isRight && scanner.isWhole())
        return {};
    return path
        + QStringLiteral(": is not whole: line %1 is wrong or missing; is the disk full?")
              .arg(scanner.line());
}

} // namespace seamrevise
