#pragma once

#include <QStringList>

#include <ostream>

namespace seamrevise
{

/// Runs the command that the arguments name; the first one is the program's own name. A
/// QCoreApplication must exist. Nothing is thrown.
///
/// @param errIsTerminal  whether progress may be shown on err
/// @return an ExitCode
int runCommandLine(const QStringList &arguments, bool errIsTerminal, std::ostream &out,
                   std::ostream &err);

} // namespace seamrevise
