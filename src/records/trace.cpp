#include "records/trace.h"

#include "seamrevision/errinfo.h"

#include <QMessageLogger>

namespace seamrevision
{

namespace
{

using WriteLine = void (QMessageLogger::*)(const char *format, ...) const;

/// Hands a line to the message handler. Lines are written where memory has just run out, and
/// where nothing may be thrown any more: one that cannot be made is dropped.
void write(WriteLine writeLine, const char *text) noexcept
{
    try {
        (QMessageLogger().*writeLine)("%s", text);
    } catch (...) { // nobody is left to tell
    }
}

void writeTraced(WriteLine writeLine, const QString &function, int line,
                 const char *message) noexcept
{
    try {
        const QByteArray text = generateErrInfo(function, line, QString::fromUtf8(message));
        write(writeLine, QString::fromUtf8(text).toLocal8Bit().constData());
    } catch (...) { // nobody is left to tell
    }
}

} // namespace

Trace::Trace(const QString &function)
    : m_function(function)
    , m_running(m_function)
{
}

void Trace::critical(int line, const char *message) const
{
    writeTraced(&QMessageLogger::critical, m_function, line, message);
}

void Trace::warning(int line, const char *message) const
{
    writeTraced(&QMessageLogger::warning, m_function, line, message);
}

void Trace::debug(int line, const char *message) const
{
    writeTraced(&QMessageLogger::debug, m_function, line, message);
}

void logPlain(const char *message)
{
    write(&QMessageLogger::debug, message);
}

} // namespace seamrevision
