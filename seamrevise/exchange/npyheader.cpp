#include "exchange/npyheader.h"

#include <QStringList>
#include <QtEndian>

#include <algorithm>
#include <limits>

namespace seamrevise
{

namespace
{

/// Arrays of plain numbers have headers of a few hundred bytes.
constexpr qint64 mostHeaderBytes = qint64{1} << 16;
constexpr std::size_t mostDimensions = 64;

bool isBlank(char letter)
{
    return letter == ' ' || letter == '\t' || letter == '\n' || letter == '\r';
}

bool isDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

/// Reads the dictionary of a header, which is written as Python writes one:
///     {'descr': '<u2', 'fortran_order': False, 'shape': (12, 20, 9), }
/// The three members stand there once each, in any order, and nothing else does.
class DictionaryParser
{
public:
    explicit DictionaryParser(const QByteArray &text)
        : m_text(text)
    {
    }

    /// Empty, or what is wrong.
    QString parse(NpyHeader &header)
    {
        if (!skip('{'))
            return fault(QStringLiteral("\"{\""));
        while (!skip('}')) {
            QString wrong = parseMember(header);
            if (!wrong.isEmpty())
                return wrong;
            // A comma may also follow the last member.
            if (!skip(',') && !isNext('}'))
                return fault(QStringLiteral("\",\" or \"}\""));
        }
        skipBlanks();
        if (m_position != m_text.size())
            return fault(QStringLiteral("the end"));
        for (const char *const key : {"descr", "fortran_order", "shape"}) {
            if (!m_seen.contains(QLatin1String(key)))
                return QStringLiteral("its header has no %1").arg(QLatin1String(key));
        }
        return {};
    }

private:
    QString parseMember(NpyHeader &header)
    {
        QString key;
        if (!parseText(key))
            return fault(QStringLiteral("a name in quotes"));
        if (m_seen.contains(key))
            return QStringLiteral("its header has %1 twice").arg(key);
        m_seen += key;
        if (!skip(':'))
            return fault(QStringLiteral("\":\""));
        if (key == QLatin1String("descr"))
            return parseType(header.type);
        if (key == QLatin1String("fortran_order"))
            return parseFlag(header.isFortranOrder);
        if (key == QLatin1String("shape"))
            return parseShape(header.shape);
        return QStringLiteral("its header has a member %1 that arrays do not have").arg(key);
    }

    QString parseType(QString &type)
    {
        if (isNext('[') || isNext('('))
            return skipBrackets(); // names and types of several values in one
        return parseText(type) ? QString() : fault(QStringLiteral("a type in quotes"));
    }

    QString parseFlag(bool &flag)
    {
        flag = skipWord("True");
        return flag || skipWord("False") ? QString() : fault(QStringLiteral("True or False"));
    }

    QString parseShape(std::vector<qint64> &shape)
    {
        if (!skip('('))
            return fault(QStringLiteral("\"(\""));
        while (!skip(')')) {
            qint64 side = 0;
            if (!parseNumber(side))
                return fault(QStringLiteral("a number that fits 64 bits"));
            shape.push_back(side);
            if (shape.size() > mostDimensions)
                return QStringLiteral("its header has too many dimensions");
            // "(3)" is just a number.
            if (!skip(',') && (shape.size() == 1 || !isNext(')')))
                return fault(QStringLiteral("\",\""));
        }
        return {};
    }

    /// A text in single or double quotes, of printable letters without escapes.
    bool parseText(QString &text)
    {
        const char quote = isNext('\'') ? '\'' : '"';
        if (!skip(quote))
            return false;
        const int end = m_text.indexOf(quote, m_position);
        if (end == -1)
            return false;
        const QByteArray letters = m_text.mid(m_position, end - m_position);
        const bool isPlain = std::all_of(letters.begin(), letters.end(), [](char letter) {
            return letter >= ' ' && letter <= '~' && letter != '\\';
        });
        m_position = end + 1;
        text = QString::fromLatin1(letters);
        return isPlain;
    }

    bool parseNumber(qint64 &number)
    {
        skipBlanks();
        const int start = m_position;
        while (m_position < m_text.size() && isDigit(m_text[m_position]))
            ++m_position;
        bool fits = false;
        number = m_text.mid(start, m_position - start).toLongLong(&fits);
        skipWord("L"); // what Python 2 wrote after long integers
        return fits;
    }

    /// Everything to the bracket that closes the next one, texts in quotes aside.
    QString skipBrackets()
    {
        int depth = 0;
        QString text;
        do {
            if (isNext('\'') || isNext('"')) {
                if (!parseText(text))
                    return fault(QStringLiteral("a text in quotes"));
            } else if (m_position == m_text.size()) {
                return fault(QStringLiteral("a closing bracket"));
            } else {
                const char letter = m_text[m_position++];
                depth += letter == '[' || letter == '(' ? 1 : 0;
                depth -= letter == ']' || letter == ')' ? 1 : 0;
            }
        } while (depth > 0);
        return {};
    }

    void skipBlanks()
    {
        while (m_position < m_text.size() && isBlank(m_text[m_position]))
            ++m_position;
    }

    bool isNext(char letter)
    {
        skipBlanks();
        return m_position < m_text.size() && m_text[m_position] == letter;
    }

    bool skip(char letter)
    {
        const bool isThere = isNext(letter);
        m_position += isThere ? 1 : 0;
        return isThere;
    }

    bool skipWord(const char *word)
    {
        skipBlanks();
        const QByteArray letters(word);
        const bool isThere = m_text.mid(m_position, letters.size()) == letters;
        m_position += isThere ? letters.size() : 0;
        return isThere;
    }

    QString fault(const QString &expected) const
    {
        return QStringLiteral("its header is damaged: %1 is missing at byte %2 of \"%3\"")
            .arg(expected)
            .arg(m_position)
            .arg(QString::fromLatin1(m_text.left(80).simplified()));
    }

    const QByteArray m_text;
    int m_position = 0;
    QStringList m_seen;
};

} // namespace

QString readNpyHeader(QIODevice &file, NpyHeader &header)
{
    header = NpyHeader();
    const QByteArray start = file.read(npyMagicBytes + 2);
    if (start.size() < npyMagicBytes + 2)
        return QStringLiteral("it ends within its header");
    if (!start.startsWith(npyMagic))
        return QStringLiteral("it is no NumPy array file");
    const int version = static_cast<unsigned char>(start[npyMagicBytes]);
    if (version < 1 || version > 3)
        return QStringLiteral("its NumPy format is version %1; versions 1 to 3 are read")
            .arg(version);

    const QByteArray length = file.read(version == 1 ? 2 : 4);
    if (length.size() < (version == 1 ? 2 : 4))
        return QStringLiteral("it ends within its header");
    const qint64 textBytes = version == 1 ? qint64{qFromLittleEndian<quint16>(length.constData())}
                                          : qint64{qFromLittleEndian<quint32>(length.constData())};
    if (textBytes > mostHeaderBytes)
        return QStringLiteral("its header of %1 bytes is longer than that of any array of numbers")
            .arg(textBytes);
    const QByteArray text = file.read(textBytes);
    if (text.size() < textBytes)
        return QStringLiteral("it ends within its header");
    return DictionaryParser(text).parse(header);
}

QString typeText(const QString &type)
{
    if (type.isEmpty())
        return QStringLiteral("records of several values");
    static const struct
    {
        char letter;
        const char *text; ///< bits of a value, where there is a place for them
    } kinds[] = {
        {'b', "truth values"},
        {'i', "%1-bit signed integers"},
        {'u', "%1-bit unsigned integers"},
        {'f', "%1-bit floats"},
        {'c', "%1-bit complex numbers"},
        {'S', "texts"},
        {'a', "texts"},
        {'U', "texts"},
        {'O', "Python objects"},
        {'M', "dates"},
        {'m', "durations"},
        {'V', "raw bytes"},
    };
    const bool hasOrder = QStringLiteral("<>|=").contains(type[0]);
    const QString rest = type.mid(hasOrder ? 1 : 0);
    const qint64 bits = qint64{8} * rest.mid(1).toInt();
    for (const auto &kind : kinds) {
        const QString text = QString::fromLatin1(kind.text);
        if (rest.startsWith(QLatin1Char(kind.letter)))
            return text.contains(QLatin1String("%1")) ? text.arg(bits) : text;
    }
    return QStringLiteral("values of the unknown type \"%1\"").arg(type);
}

QString shapeText(const std::vector<qint64> &shape)
{
    QStringList sides;
    for (const qint64 side : shape)
        sides += QString::number(side);
    return QStringLiteral("(%1)").arg(sides.join(QStringLiteral(", ")));
}

} // namespace seamrevise
