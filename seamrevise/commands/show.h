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

struct ShowOptions
{
    QString directory;
    int number = 0;
    QString npyFile;   ///< empty: none
    bool text = false; ///< all values as lines on out instead of a summary
    CommonOptions common;
};

void declareShow(CLI::App &app, ShowOptions &options);

/// Shows one partition's delivered coefficients. Returns an ExitCode.
int show(const ShowOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
