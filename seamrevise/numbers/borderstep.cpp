#include "numbers/borderstep.h"

#include <algorithm>
#include <cmath>

namespace seamrevise
{

namespace
{

constexpr int stepDepth = 8;
constexpr std::size_t blockLines = 16;

/// The mean luminance of every row of a rectangle.
std::vector<double> rowMeans(const NQRect &rect, const Luminance &luminance)
{
    std::vector<double> means;
    for (int row = rect.top(); row <= rect.bottom(); ++row) {
        double sum = 0.0;
        for (int col = rect.left(); col <= rect.right(); ++col)
            sum += luminance(row, col);
        means.push_back(sum / static_cast<double>(columnsOf(rect)));
    }
    return means;
}

/// The mean luminance of every column of a rectangle.
std::vector<double> columnMeans(const NQRect &rect, const Luminance &luminance)
{
    const NQRect turned(rect.top(), rect.left(), rect.bottom(), rect.right());
    return rowMeans(turned, [&](int row, int col) { return luminance(col, row); });
}

double mean(const std::vector<double> &values, std::size_t first, std::size_t count)
{
    double sum = 0.0;
    for (std::size_t i = first; i < first + count; ++i)
        sum += values[i];
    return sum / static_cast<double>(count);
}

double worstStep(const std::vector<double> &current, const std::vector<double> &next)
{
    const std::size_t lineCount = std::min(current.size(), next.size());
    double worst = 0.0;
    for (std::size_t first = 0; first < lineCount;) {
        const std::size_t left = lineCount - first;
        const std::size_t count = left < 2 * blockLines ? left : blockLines;
        const double below = mean(current, first, count);
        const double above = mean(next, first, count);
        if (above + below > 0.0)
            worst = std::max(worst, std::fabs(2.0 * (above - below) / (above + below)));
        first += count;
    }
    return worst;
}

} // namespace

EdgeProfile edgeProfile(const NQRect &partition, const Luminance &luminance)
{
    const int left = partition.left();
    const int top = partition.top();
    const int right = partition.right();
    const int bottom = partition.bottom();
    const int wide = std::min(stepDepth, right - left + 1) - 1;
    const int high = std::min(stepDepth, bottom - top + 1) - 1;
    EdgeProfile profile;
    profile.left = rowMeans(NQRect(left, top, left + wide, bottom), luminance);
    profile.top = columnMeans(NQRect(left, top, right, top + high), luminance);
    profile.right = rowMeans(NQRect(right - wide, top, right, bottom), luminance);
    profile.bottom = columnMeans(NQRect(left, bottom - high, right, bottom), luminance);
    return profile;
}

double borderStep(enum_ReviseDirection direction, const EdgeProfile &current,
                  const EdgeProfile &next)
{
    return direction == ReviseDirection_Horizontal ? worstStep(current.right, next.left)
                                                   : worstStep(current.bottom, next.top);
}

std::vector<SeamStep> seamSteps(const std::vector<SeamPair> &seams, const EdgeProfiles &before,
                                const EdgeProfiles &after)
{
    const auto step = [](const SeamPair &seam, const EdgeProfiles &profiles) {
        return borderStep(seam.direction, profiles.at(seam.current), profiles.at(seam.next));
    };
    std::vector<SeamStep> steps;
    for (const SeamPair &seam : seams) {
        if (before.count(seam.current) != 0 && before.count(seam.next) != 0)
            steps.push_back({seam, step(seam, before), step(seam, after)});
    }
    std::stable_sort(steps.begin(), steps.end(), [](const SeamStep &one, const SeamStep &other) {
        return one.before > other.before;
    });
    return steps;
}

} // namespace seamrevise
