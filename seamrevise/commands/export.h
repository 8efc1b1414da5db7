#pragma once

#include "commands/commonoptions.h"
#include "exchange/sourcefile.h"

#include <QString>

#include <ostream>

namespace CLI
{
class App;
}

namespace seamrevise
{

struct ExportOptions
{
    QString database;
    QString outputDir; ///< made if missing
    SourceFormat format = SourceFormat::Npy;
    bool overwrite = false; ///< the directory may hold something
    CommonOptions common;
};

void declareExport(CLI::App &app, ExportOptions &options);

/// Writes all coefficients of a screen database to files, and the layout file that imports them
/// again. The layout is written last: where it is, everything is. Holds one partition in memory at
/// a time. Returns an ExitCode; what went wrong is a line on err.
int exportCoefficients(const ExportOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
