#include "commands/loglines.h"

#include <QString>
#include <QtGlobal>

namespace seamrevise
{

namespace
{

struct Destination
{
    std::ostream *stream = nullptr;
    QtMessageHandler previousHandler = nullptr;
};

Destination &destination()
{
    static Destination instance;
    return instance;
}

void writeLine(QtMsgType, const QMessageLogContext &, const QString &message)
{
    if (destination().stream)
        *destination().stream << message.toStdString() << '\n';
}

} // namespace

LogLines::LogLines(std::ostream *stream)
{
    destination().stream = stream;
    destination().previousHandler = qInstallMessageHandler(writeLine);
}

LogLines::~LogLines()
{
    qInstallMessageHandler(destination().previousHandler);
    destination() = Destination();
}

} // namespace seamrevise
