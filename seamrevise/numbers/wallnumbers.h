#pragma once

#include "numbers/finding.h"
#include "numbers/measurements.h"
#include "numbers/registration.h"
#include "numbers/seamnumbers.h"

#include <optional>
#include <vector>

namespace seamrevise
{

/// A step that is hardly seen.
constexpr double usualStepLimit = 0.005;

/// How a wall is revised.
struct WallPlan
{
    const ScreenLayout &layout;
    baseCommon::NQSize band;
    int margin = 0;
    std::set<int> corrected;
    double stepLimit = usualStepLimit;
    int cap = 0; ///< the largest value that a table holds
};

/// Two neighbours of the grid and what is known of the seam between them.
struct SeamReport
{
    Strip strip;
    bool revised = false; ///< values were blended
    QString reason;       ///< why they were not; empty if they were
    SeamNumbers numbers;  ///< empty unless both partitions are corrected and share a strip
    std::optional<Misregistration> shift;
};

struct WallNumbers
{
    std::vector<SeamReport> seams; ///< in the order of seamsOf()
    ChangeAccount changes;         ///< of the whole wall
};

WallNumbers wallNumbers(const WallPlan &plan, const WallMeasurements &measured);

/// What looks wrong, though the wall can be revised.
Findings lookFindings(const WallPlan &plan, const WallMeasurements &measured,
                      const WallNumbers &numbers);

/// Whether a seam's step after exceeds the limit, or grew by more than 0.1 %.
bool failsLimit(const SeamNumbers &numbers, double stepLimit);

} // namespace seamrevise
