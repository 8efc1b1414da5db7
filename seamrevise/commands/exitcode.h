#pragma once

#include <QString>

#include <ostream>

namespace seamrevise
{

/// What the program's exit code says. Scripts rely on the numbers.
enum ExitCode : int
{
    Exit_Done = 0,
    Exit_Different = 1, ///< a check that was asked for found differences
    Exit_Usage = 2,     ///< the command line is wrong
    Exit_Input = 3,     ///< what is to be read cannot be used: database, imported file, delivery
    Exit_Output = 4,    ///< output could not be written or read back
    Exit_Internal = 5   ///< a fault of the program, or no memory
};

/// One line on err; returns the code.
int reportFault(ExitCode code, const QString &message, std::ostream &err);

} // namespace seamrevise
