#pragma once

#include "commands/commonoptions.h"

#include <seamrevision/nqsize.h>

#include <QString>

#include <optional>
#include <ostream>

namespace CLI
{
class App;
}

namespace seamrevise
{

struct ReviseOptions
{
    QString database;
    QString outputDir;  ///< made if missing
    bool table = false; ///< the whole screen in tables instead of files per partition
    bool files = false; ///< said outright; what is written without `table` in any case
    std::optional<baseCommon::NQSize> band; ///< the database's if not given
    int margin = 0;                         ///< positions left as they are at a strip's ends
    int layerCount = 0;                     ///< 0: single layer
    QString dumpDir;                        ///< of the text dumps, made if missing; empty: none
    CommonOptions common;
};

void declareRevise(CLI::App &app, ReviseOptions &options);

/// Revises the seams of a wall, writes its coefficients and reads them back. The database is
/// checked before anything is written. Returns an ExitCode; what went wrong is a line on err.
int revise(const ReviseOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
