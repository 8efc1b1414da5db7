#pragma once

#include <seamrevision/nqsize.h>

#include <QString>

#include <optional>
#include <ostream>

namespace seamrevise
{

struct ReviseOptions
{
    QString database;
    QString outputDir;  ///< made if missing
    bool table = false; ///< the whole screen in tables instead of files per partition
    std::optional<baseCommon::NQSize> band; ///< the database's if not given
    int margin = 0;                         ///< positions left as they are at a strip's ends
    int layerCount = 0;                     ///< 0: single layer
    QString dumpDir;                        ///< of the text dumps, made if missing; empty: none
    bool showProgress = false;              ///< err is a terminal
};

/// Revises the seams of a wall, writes its coefficients and reads them back. The database is
/// checked before anything is written. Returns an ExitCode; what went wrong is a line on err.
int revise(const ReviseOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
