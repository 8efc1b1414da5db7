#pragma once

#include "commands/commonoptions.h"
#include "commands/walloptions.h"

#include <ostream>

namespace seamrevise
{

struct CheckOptions : WallOptions
{
    CommonOptions common;
};

void declareCheck(CLI::App &app, CheckOptions &options);

/// Says what would go wrong or look wrong if the wall were revised. Blends in memory and writes
/// nothing. Returns an ExitCode: Exit_Different if there are findings.
int check(const CheckOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
