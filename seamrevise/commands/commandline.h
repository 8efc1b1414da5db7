#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace seamrevise
{

/// Runs the command that the first word names; the others are its arguments and options. The
/// program's own name is not among them. A word that is not UTF-8 is refused, since it could not
/// be kept as it is. A QCoreApplication must exist. Nothing is thrown.
///
/// @param errIsTerminal  whether progress may be shown on err
/// @return an ExitCode; also when out does not take what is written
int runCommandLine(const std::vector<std::string> &words, bool errIsTerminal, std::ostream &out,
                   std::ostream &err);

} // namespace seamrevise
