#pragma once

#include "seamrevision/funcrunningstate.h"

#include <QString>

/// How the library reports to the host's Qt message handler, without file or line context. Logging
/// never throws: a line for which there is no memory is dropped.
namespace seamrevision
{

/// Opens the guard of one operation and writes that operation's traced lines. The name comes as a
/// QStringLiteral, so that opening cannot fail.
class Trace
{
public:
    explicit Trace(const QString &function);

    void critical(int line, const char *message) const;
    void warning(int line, const char *message) const;
    void debug(int line, const char *message) const;

private:
    const QString m_function;
    const FuncRunningState m_running;
};

/// A debug line that is the message alone.
void logPlain(const char *message);

} // namespace seamrevision
