#pragma once

#include "store/screenlayout.h"

#include <functional>
#include <map>
#include <vector>

/// How much brighter one side of a border between two partitions is than the other.
///
/// Measured on the relative white luminance that coefficients give a pixel, averaged over the 8
/// pixels next to the border on each side and over blocks of 16 lines along it:
///     step = 2 (next - current) / (next + current)
/// A partition of fewer pixels counts with those it has; the lines that are left over belong to
/// the last block.
namespace seamrevise
{

/// What each primary adds to the luminance of white.
constexpr double luminanceWeights[3] = {0.2126, 0.7152, 0.0722};

/// The luminance of a screen pixel.
using Luminance = std::function<double(int row, int col)>;

/// Mean luminances of the pixels next to a partition's edges: one for each line that crosses the
/// edge, in screen order.
struct EdgeProfile
{
    std::vector<double> left;
    std::vector<double> top;
    std::vector<double> right;
    std::vector<double> bottom;
};

EdgeProfile edgeProfile(const NQRect &partition, const Luminance &luminance);

/// The largest step among the blocks of a seam, without its sign.
double borderStep(enum_ReviseDirection direction, const EdgeProfile &current,
                  const EdgeProfile &next);

/// The profiles of partitions, under their numbers.
using EdgeProfiles = std::map<int, EdgeProfile>;

struct SeamStep
{
    SeamPair seam;
    double before;
    double after;
};

/// The steps of the seams whose two partitions have profiles, the worst before first.
std::vector<SeamStep> seamSteps(const std::vector<SeamPair> &seams, const EdgeProfiles &before,
                                const EdgeProfiles &after);

} // namespace seamrevise
