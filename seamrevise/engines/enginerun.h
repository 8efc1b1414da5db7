#pragma once

#include "engines/revisedzones.h"
#include "numbers/luminance.h"
#include "numbers/measurements.h"
#include "process/backgroundwork.h"

#include <seamrevision/screendatabasemanager.h>

#include <QString>

#include <functional>
#include <set>

namespace seamrevise
{

/// What an engine begins, once for each partition or seam.
enum class EngineStep
{
    Load,
    Revise,
    Save
};

/// One run of an engine over a wall.
struct EngineRequest
{
    ScreenDataBaseManager &store;
    const ScreenLayout &layout;
    std::set<int> corrected; ///< as the store lists them; their zones cover partition and band
    baseCommon::NQSize band;
    int margin = 0;
    LuminanceWeights weights = usualWeights;
    QString dir;              ///< of the files
    bool toFiles = false;     ///< else into the result's table
    int deliveredCap = noCap; ///< of the values that the numbers take as delivered

    /// Beside the run, takes the SHA-256 of what is stored; not taken without.
    BackgroundWork *hashing = nullptr;

    // All are called on the engine's thread.
    std::function<void(EngineStep)> onStep = [](EngineStep) {};
    /// All zones are read and revised, and none is saved yet; what was measured of them is there.
    /// Returns whether to save them; if not, the run ends well and without a table.
    std::function<bool(const RevisedZones &)> onRevised = [](const RevisedZones &) { return true; };
    /// The files of a partition are written; the zones stay as they are until onSavingEnded.
    std::function<void(int number, const RevisedZones &)> onFilesWritten
        = [](int, const RevisedZones &) {};
    /// Saving has ended, well or not, and the zones will be gone.
    std::function<void()> onSavingEnded = [] {};
};

/// How long the parts of a run took.
struct EngineTimes
{
    double reading = 0.0;   ///< zones out of the store
    double revising = 0.0;  ///< with what the engine does besides
    double measuring = 0.0; ///< taking from the zones what the numbers need
    double saving = 0.0;
    double checking = 0.0; ///< what is done when saving has ended
};

} // namespace seamrevise
