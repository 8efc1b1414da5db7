#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace seamrevise
{

/// Writes one JSON document (RFC 8259) whose members keep the order in which they are added, which
/// Qt's own objects do not. Two blanks a level; an array that is opened inline stays on its line.
///
///     JsonWriter json;
///     json.beginObject();
///     json.member("schema", "seamrevise/1");
///     json.beginArray("grid", JsonWriter::Inline);
///     json.value(6);
///     json.value(4);
///     json.endArray();
///     json.endObject();
///
/// Calls must nest as the document does. Numbers are written with as many digits as give the same
/// double again, and null where they are not finite.
class JsonWriter
{
public:
    enum Layout
    {
        Lines, ///< a line each
        Inline ///< all on one line, also what is nested
    };

    /// Begins the document, the next value of an array or, with a key, a member of an object.
    void beginObject(const char *key = nullptr, Layout layout = Lines);
    void endObject() { end('}'); }
    void beginArray(const char *key = nullptr, Layout layout = Lines);
    void endArray() { end(']'); }

    /// The next value of an array.
    void value(const QString &text);
    void value(const char *text) { value(QString::fromUtf8(text)); }
    void value(double number);
    void value(qint64 number);
    void value(int number) { value(qint64{number}); }
    void value(bool flag);
    void null();
    /// null if there is none.
    template <typename Value>
    void value(const std::optional<Value> &value_)
    {
        value_ ? value(*value_) : null();
    }

    /// A member of an object.
    template <typename Value>
    void member(const char *key, const Value &value_)
    {
        addKey(key);
        value(value_);
    }

    /// The text so far; it ends in a line's end once the document is closed.
    const QByteArray &text() const { return m_text; }

private:
    struct Level
    {
        bool isInline;
        bool isEmpty;
    };

    void begin(const char *key, char bracket, Layout layout);
    void end(char bracket);
    void addKey(const char *key);
    void separate();
    void addText(const QString &text);

    QByteArray m_text;
    std::vector<Level> m_levels;
    bool m_afterKey = false;
};

} // namespace seamrevise
