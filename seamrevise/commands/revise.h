#pragma once

#include "commands/commonoptions.h"
#include "commands/walloptions.h"

#include <QString>
#include <QStringList>

#include <ostream>

namespace seamrevise
{

struct ReviseOptions : WallOptions
{
    QString outputDir;  ///< made if missing
    bool table = false; ///< the whole screen in tables instead of files per partition
    bool files = false; ///< said outright; what is written without `table` in any case
    QString dumpDir;    ///< of the text dumps, made if missing; empty: none
    bool force = false; ///< replace the delivery that is there
    int keep = 1;       ///< replaced deliveries that stay
    bool dryRun = false;
    CommonOptions common;
};

void declareRevise(CLI::App &app, ReviseOptions &options);

/// The command line with every option resolved.
QStringList resolvedCommand(const ReviseOptions &options, const baseCommon::NQSize &band);

/// Revises the seams of a wall and delivers its coefficients: they are written beside the output
/// directory, read back, and put in place whole or not at all. The database is checked before
/// anything is written, and what looks wrong is said before anything is put in place. Returns an
/// ExitCode, Exit_Different if a step limit was given and does not hold; what went wrong is a line
/// on err.
int revise(const ReviseOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
