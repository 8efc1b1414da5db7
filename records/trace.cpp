#include "records/trace.h"

#include "records/errinfo.h"

#include <QDebug>

namespace seamrevision
{

Trace::Trace(const QString &function)
    : m_function(function)
    , m_running(m_function)
{
}

void Trace::critical(int line, const char *message) const
{
    QMessageLogger().critical() << tracedText(line, message).constData();
}

void Trace::warning(int line, const char *message) const
{
    QMessageLogger().warning() << tracedText(line, message).constData();
}

void Trace::debug(int line, const char *message) const
{
    QMessageLogger().debug() << tracedText(line, message).constData();
}

QByteArray Trace::tracedText(int line, const char *message) const
{
    return QString::fromUtf8(generateErrInfo(m_function, line, QString::fromUtf8(message)))
        .toLocal8Bit();
}

void logPlain(const char *message)
{
    QMessageLogger().debug() << message;
}

} // namespace seamrevision
