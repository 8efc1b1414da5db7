#include "commands/exitcode.h"

namespace seamrevise
{

int reportFault(ExitCode code, const QString &message, std::ostream &err)
{
    err << "seamrevise: " << message.toStdString() << '\n';
    return code;
}

} // namespace seamrevise
