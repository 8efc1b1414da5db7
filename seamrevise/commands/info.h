#pragma once

#include "commands/commonoptions.h"

#include <QString>

#include <ostream>

namespace CLI
{
class App;
}

namespace seamrevise
{

struct InfoOptions
{
    QString database;
    CommonOptions common;
};

void declareInfo(CLI::App &app, InfoOptions &options);

/// Shows what a screen database holds, and who wrote it. Holds one partition in memory at a time.
/// Returns an ExitCode; what went wrong is a line on err.
int info(const InfoOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
