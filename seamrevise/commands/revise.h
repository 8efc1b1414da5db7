#pragma once

#include "commands/commonoptions.h"
#include "commands/walloptions.h"

#include <QString>

#include <ostream>

namespace seamrevise
{

struct ReviseOptions : WallOptions
{
    QString outputDir;  ///< made if missing
    bool table = false; ///< the whole screen in tables instead of files per partition
    bool files = false; ///< said outright; what is written without `table` in any case
    QString dumpDir;    ///< of the text dumps, made if missing; empty: none
    CommonOptions common;
};

void declareRevise(CLI::App &app, ReviseOptions &options);

/// Revises the seams of a wall, writes its coefficients and reads them back. The database is
/// checked before anything is written, and what looks wrong is said before it is. Returns an
/// ExitCode, Exit_Different if a step limit was given and does not hold; what went wrong is a line
/// on err.
int revise(const ReviseOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
