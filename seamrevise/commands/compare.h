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

struct CompareOptions
{
    QString first;
    QString second;
    CommonOptions common;
};

void declareCompare(CLI::App &app, CompareOptions &options);

/// Says for each partition how much its coefficients differ between two deliveries. Returns an
/// ExitCode: Exit_Different where any does.
int compare(const CompareOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
