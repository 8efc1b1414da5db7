#pragma once

#include "numbers/strip.h"

#include <optional>

namespace seamrevise
{

/// By how many pixels the next partition's coefficients seem to lie off the current one's.
struct Misregistration
{
    int columns;         ///< reading the next partition's values this far to the right
    int rows;            ///< and this far down makes them agree best
    double scatter;      ///< of the ratios as they are: median deviation from their median
    double scatterThere; ///< with that shift
};

/// Looks for the whole-pixel shift, at most 3 in both directions, with which the two corrections
/// of a strip's LEDs scatter least. Empty if no shift beats none clearly, or if the strip is too
/// small to tell. A sample of the strip decides. Independent of every other strip.
std::optional<Misregistration> misregistration(const Strip &strip, const StripLight &light);

} // namespace seamrevise
