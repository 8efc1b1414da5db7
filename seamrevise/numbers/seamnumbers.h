#pragma once

#include "numbers/strip.h"

#include <QString>

#include <optional>
#include <vector>

/// How well two neighbouring partitions agree, and how large a step is left between them.
///
/// Every number comes from ratios of two corrections of one LED, so that the LEDs' own differences
/// cancel. docs/seam-numbers.md has the formulas.
namespace seamrevise
{

/// Lines of a block; what is left over belongs to the last one.
constexpr int linesPerBlock = 16;

/// The median ratio of a strip less 1, and that of the block in which it is largest.
struct Disagreement
{
    double median;
    double worst;
    int worstLine; ///< the first screen row (horizontal seam) or column of that block
};

/// The largest difference between neighbouring positions: of the worst block, and on average.
struct Step
{
    double worst;
    double mean;
    int worstLine; ///< as in Disagreement
};

struct BlockNumbers
{
    int firstLine = 0; ///< of the strip, from 0
    int lineCount = 0;
    std::optional<double> disagreement;
    std::optional<double> before;
    std::optional<double> after;
};

/// What is empty could not be reckoned from any pixel.
struct SeamNumbers
{
    std::optional<Disagreement> disagreement;
    std::optional<Step> before;
    std::optional<Step> after;
    std::optional<double> widthNeeded; ///< positions: a whole number, perhaps beyond any int
    qint64 darkPixels = 0;             ///< left out of everything
    std::vector<BlockNumbers> blocks;
};

/// The numbers of one strip, which has a pixel. Independent of every other strip.
SeamNumbers seamNumbers(const Strip &strip, const StripLight &light, int margin, double stepLimit);

} // namespace seamrevise
