#pragma once

#include "numbers/changeaccount.h"
#include "numbers/strip.h"

#include <map>
#include <vector>

namespace seamrevise
{

/// What was taken from a wall's zones while they passed: all that its numbers need.
struct WallMeasurements
{
    /// Of a seam between two corrected partitions whose zones share a strip.
    struct MeasuredStrip
    {
        Strip strip;
        StripLight light;
    };
    std::vector<MeasuredStrip> strips;    ///< in the order of seamsOf()
    std::map<int, PartitionLooks> looks;  ///< of corrected partitions, under their numbers
    std::map<int, ChangeAccount> changes; ///< likewise
};

} // namespace seamrevise
