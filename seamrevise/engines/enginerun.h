#pragma once

#include "engines/revisedzones.h"
#include "numbers/luminance.h"
#include "numbers/measurements.h"

#include <seamrevision/screendatabasemanager.h>

#include <QString>

#include <functional>
#include <set>

namespace seamrevise
{

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

    bool hashesStored = false; ///< takes the SHA-256 of what is stored, while it is read

    /// All zones are read and revised, and none is saved yet; what was measured of them is there.
    /// Returns whether to save them; if not, the run ends well and without a table.
    std::function<bool(const RevisedZones &)> onRevised = [](const RevisedZones &) { return true; };
    /// The zones are saved and still as they were.
    std::function<void(const RevisedZones &)> onSaved = [](const RevisedZones &) {};
};

/// How long the parts of a run took.
struct EngineTimes
{
    double reading = 0.0;   ///< zones out of the store
    double revising = 0.0;  ///< with what the engine does besides
    double measuring = 0.0; ///< taking from the zones what the numbers need
    double saving = 0.0;
    double checking = 0.0; ///< what is done once the zones are saved
};

} // namespace seamrevise
