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

struct UpgradeOptions
{
    QString database;
    CommonOptions common;
};

void declareUpgrade(CLI::App &app, UpgradeOptions &options);

/// Gives a screen database the current version of the schema, whole or not at all. Returns an
/// ExitCode; what went wrong is a line on err.
int upgrade(const UpgradeOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
