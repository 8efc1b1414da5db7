#pragma once

#include "commands/commonoptions.h"
#include "simulation/wallsimulation.h"

#include <seamrevision/nqsize.h>

#include <QString>

#include <ostream>
#include <vector>

namespace CLI
{
class App;
}

namespace seamrevise
{

struct SimulateOptions
{
    QString database;
    baseCommon::NQSize size; ///< pixels of the wall
    baseCommon::NQSize grid; ///< columns and rows of partitions, no more than pixels
    baseCommon::NQSize band{16, 16};
    WallTraits traits;
    std::vector<int> uncorrected; ///< numbers of partitions without coefficients
    int layerCount = 0;           ///< 0: no layered coefficients
    QString lightFile;            ///< of the true light of every LED; empty: none
    bool overwrite = false;
    CommonOptions common;
};

void declareSimulate(CLI::App &app, SimulateOptions &options);

/// Makes a screen database of a plausible wall; the same options make the same file. The file
/// appears whole or not at all. Holds one partition in memory at a time.
/// Returns an ExitCode; what went wrong is a line on err.
int simulate(const SimulateOptions &options, std::ostream &out, std::ostream &err);

} // namespace seamrevise
