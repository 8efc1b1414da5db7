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

struct RestoreOptions
{
    QString directory;
    QString from; ///< name of a kept set; empty: the newest
    CommonOptions common;
};

void declareRestore(CLI::App &app, RestoreOptions &options);

/// Puts a kept set back in place of a delivery, which becomes a kept one. Returns an ExitCode.
int restore(const RestoreOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
