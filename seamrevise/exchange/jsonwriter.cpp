#include "exchange/jsonwriter.h"

#include <QLocale>

#include <cmath>

namespace seamrevise
{

void JsonWriter::beginObject(const char *key, Layout layout)
{
    begin(key, '{', layout);
}

void JsonWriter::beginArray(const char *key, Layout layout)
{
    begin(key, '[', layout);
}

void JsonWriter::begin(const char *key, char bracket, Layout layout)
{
    if (key)
        addKey(key);
    separate();
    m_text += bracket;
    const bool insideInline = !m_levels.empty() && m_levels.back().isInline;
    m_levels.push_back({insideInline || layout == Inline, true});
}

void JsonWriter::end(char bracket)
{
    const Level level = m_levels.back();
    m_levels.pop_back();
    if (!level.isInline && !level.isEmpty)
        m_text += '\n' + QByteArray(2 * static_cast<int>(m_levels.size()), ' ');
    m_text += bracket;
    if (m_levels.empty())
        m_text += '\n';
}

void JsonWriter::addKey(const char *key)
{
    separate();
    addText(QString::fromUtf8(key));
    m_text += ": ";
    m_afterKey = true;
}

/// What stands before a value: nothing after its key, else a comma and a blank or a new line.
void JsonWriter::separate()
{
    if (m_afterKey || m_levels.empty()) {
        m_afterKey = false;
        return;
    }
    Level &level = m_levels.back();
    if (!level.isEmpty)
        m_text += level.isInline ? ", " : ",";
    if (!level.isInline)
        m_text += '\n' + QByteArray(2 * static_cast<int>(m_levels.size()), ' ');
    level.isEmpty = false;
}

void JsonWriter::value(const QString &text)
{
    separate();
    addText(text);
}

void JsonWriter::value(double number)
{
    if (!std::isfinite(number)) {
        null();
        return;
    }
    separate();
    m_text += QByteArray::number(number, 'g', QLocale::FloatingPointShortest);
}

void JsonWriter::value(qint64 number)
{
    separate();
    m_text += QByteArray::number(number);
}

void JsonWriter::value(bool flag)
{
    separate();
    m_text += flag ? "true" : "false";
}

void JsonWriter::null()
{
    separate();
    m_text += "null";
}

void JsonWriter::addText(const QString &text)
{
    m_text += '"';
    for (const char letter : text.toUtf8()) {
        if (letter == '"' || letter == '\\')
            m_text += '\\';
        if (static_cast<unsigned char>(letter) < 0x20)
            m_text += "\\u00" + QByteArray(1, letter).toHex();
        else
            m_text += letter;
    }
    m_text += '"';
}

} // namespace seamrevise
