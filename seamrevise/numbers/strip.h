#pragma once

#include "store/screenlayout.h"

#include <cstddef>
#include <set>
#include <vector>

namespace seamrevise
{

/// The pixels in which two neighbouring partitions correct the same LEDs: both zones, the partition
/// grown by the band and clipped to the screen, hold them, and the line is one that both
/// partitions own.
///
/// Positions run across the seam from the current partition (0) to the next (width - 1), lines
/// along it. A plain value.
struct Strip
{
    SeamPair seam{};
    NQRect rect;          ///< screen pixels; without any if the width is 0
    int width = 0;        ///< positions
    int lineCount = 0;    ///< lines
    int ownPositions = 0; ///< the first positions, those that lie in the current partition

    bool isHorizontal() const { return seam.direction == ReviseDirection_Horizontal; }
    /// The screen row or column of the first line.
    int firstLine() const { return isHorizontal() ? rect.top() : rect.left(); }
    std::size_t pixelCount() const
    {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(lineCount);
    }
    /// Where a pixel's value lies in an array of the strip: line by line.
    std::size_t index(int line, int position) const
    {
        return static_cast<std::size_t>(line) * static_cast<std::size_t>(width)
            + static_cast<std::size_t>(position);
    }
    std::size_t indexOfPixel(int row, int col) const
    {
        return isHorizontal() ? index(row - rect.top(), col - rect.left())
                              : index(col - rect.left(), row - rect.top());
    }
};

Strip stripOf(const ScreenLayout &layout, const SeamPair &seam, const baseCommon::NQSize &band);

/// How many positions of a strip are blended when a margin is left at both ends.
int blendedPositions(const Strip &strip, int margin);

/// The pixels of a partition that no strip between two corrected partitions reaches; inverted if
/// there are none.
NQRect outsideStrips(const ScreenLayout &layout, int number, const std::set<int> &corrected,
                     const baseCommon::NQSize &band);

/// The luminances of a strip's pixels, each under Strip::index().
struct StripLight
{
    std::vector<double> current;   ///< as the current partition's zone is stored
    std::vector<double> next;      ///< as the next partition's zone is stored
    std::vector<double> delivered; ///< of the partition that owns the pixel, as it is delivered
};

} // namespace seamrevise
