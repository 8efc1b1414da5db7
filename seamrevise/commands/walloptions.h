#pragma once

#include "numbers/luminance.h"

#include <seamrevision/nqsize.h>

#include <QString>

#include <optional>

namespace CLI
{
class App;
}

namespace seamrevise
{

/// What a run over a wall needs to know, whether it delivers or only looks.
struct WallOptions
{
    QString database;
    std::optional<baseCommon::NQSize> band; ///< the database's if not given
    int margin = 0;                         ///< positions left as they are at a strip's ends
    int layerCount = 0;                     ///< 0: single layer
    std::optional<double> stepLimit;        ///< usualStepLimit if not given
    LuminanceWeights weights = usualWeights;
};

/// All but the database, which is the first argument.
void declareWallOptions(CLI::App &app, WallOptions &options);

} // namespace seamrevise
