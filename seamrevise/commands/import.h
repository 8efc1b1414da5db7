#pragma once

#include "commands/commonoptions.h"

#include <seamrevision/nqrect.h>

#include <QString>

#include <optional>
#include <ostream>

namespace CLI
{
class App;
}

namespace seamrevise
{

struct ImportOptions
{
    QString database;
    QString layout;             ///< layout file of a whole wall; empty: one partition
    int number = 0;             ///< the partition to import
    int removed = 0;            ///< the partition to make uncorrected
    QString file;               ///< of the partition's coefficients
    std::optional<NQRect> zone; ///< what the file covers; the partition and the band if not given
    std::optional<int> layerCount; ///< what the file must have, or what is removed; 0: single layer
    QString station;               ///< who writes
    bool overwrite = false;        ///< also what other stations wrote
    CommonOptions common;
};

void declareImport(CLI::App &app, ImportOptions &options);

/// Takes coefficients into a screen database: those of a whole wall, or of one partition of a wall
/// that is there; or removes those of a partition. All or nothing; every mistake in the layout and
/// its files is a line on err. Holds one partition in memory at a time.
/// Returns an ExitCode.
int importCoefficients(const ImportOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
