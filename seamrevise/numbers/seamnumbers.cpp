#include "numbers/seamnumbers.h"

#include "numbers/median.h"

#include <algorithm>
#include <cmath>

namespace seamrevise
{

namespace
{

bool isDark(double current, double next)
{
    return !(current > 0.0) || !(next > 0.0);
}

/// What the pixels of a block at one position sum to.
struct PositionSums
{
    double before = 0.0;
    double after = 0.0;
    int count = 0;
};

/// The largest difference between the means of neighbouring positions; none is taken across a
/// position without pixels.
std::optional<double> largestDifference(const std::vector<PositionSums> &positions,
                                        double PositionSums::*sum)
{
    if (positions.size() == 1 && positions[0].count > 0)
        return 0.0;
    std::optional<double> largest;
    for (std::size_t i = 1; i < positions.size(); ++i) {
        const PositionSums &here = positions[i];
        const PositionSums &before = positions[i - 1];
        if (here.count > 0 && before.count > 0)
            largest = std::max(largest.value_or(0.0),
                               std::fabs(here.*sum / here.count - before.*sum / before.count));
    }
    return largest;
}

/// Reckons block by block and collects the ratios of all pixels.
class StripReckoning
{
public:
    StripReckoning(const Strip &strip, const StripLight &light)
        : m_strip(strip)
        , m_light(light)
        , m_positions(static_cast<std::size_t>(strip.width))
    {
        m_ratios.reserve(strip.pixelCount());
    }

    BlockNumbers block(int firstLine, int lineCount)
    {
        std::fill(m_positions.begin(), m_positions.end(), PositionSums());
        const auto firstRatio = static_cast<std::ptrdiff_t>(m_ratios.size());
        for (int line = firstLine; line < firstLine + lineCount; ++line)
            addLine(line);
        m_blockRatios.assign(m_ratios.begin() + firstRatio, m_ratios.end());
        BlockNumbers numbers{firstLine, lineCount, {}, {}, {}};
        if (const std::optional<double> middle = median(m_blockRatios))
            numbers.disagreement = *middle - 1.0;
        numbers.before = largestDifference(m_positions, &PositionSums::before);
        numbers.after = largestDifference(m_positions, &PositionSums::after);
        return numbers;
    }

    /// Of all blocks so far.
    std::optional<double> medianRatio() { return median(m_ratios); }
    std::size_t ratioCount() const { return m_ratios.size(); }

private:
    void addLine(int line)
    {
        for (int position = 0; position < m_strip.width; ++position) {
            const std::size_t index = m_strip.index(line, position);
            const double current = m_light.current[index];
            if (isDark(current, m_light.next[index]))
                continue;
            const double ratio = m_light.next[index] / current;
            m_ratios.push_back(ratio);
            PositionSums &sums = m_positions[static_cast<std::size_t>(position)];
            sums.before += position < m_strip.ownPositions ? 1.0 : ratio;
            sums.after += m_light.delivered[index] / current;
            ++sums.count;
        }
    }

    const Strip &m_strip;
    const StripLight &m_light;
    std::vector<PositionSums> m_positions;
    std::vector<double> m_ratios;
    std::vector<double> m_blockRatios;
};

Disagreement disagreementOf(const std::vector<BlockNumbers> &blocks, int firstLine,
                            double medianRatio)
{
    std::optional<Disagreement> worst;
    for (const BlockNumbers &block : blocks) {
        if (block.disagreement
            && (!worst || std::fabs(*block.disagreement) > std::fabs(worst->worst)))
            worst = {medianRatio - 1.0, *block.disagreement, firstLine + block.firstLine};
    }
    return *worst;
}

std::optional<Step> stepOf(const std::vector<BlockNumbers> &blocks, int firstLine,
                           std::optional<double> BlockNumbers::*part)
{
    std::optional<Step> step;
    double sum = 0.0;
    int count = 0;
    for (const BlockNumbers &block : blocks) {
        const std::optional<double> &value = block.*part;
        if (!value)
            continue;
        sum += *value;
        ++count;
        if (!step || *value > step->worst)
            step = Step{*value, 0.0, firstLine + block.firstLine};
    }
    if (step)
        step->mean = sum / count;
    return step;
}

} // namespace

SeamNumbers seamNumbers(const Strip &strip, const StripLight &light, int margin, double stepLimit)
{
    StripReckoning reckoning(strip, light);
    SeamNumbers numbers;
    const int blockCount = std::max(1, strip.lineCount / linesPerBlock);
    for (int block = 0; block < blockCount; ++block) {
        const int first = block * linesPerBlock;
        const int end = block + 1 == blockCount ? strip.lineCount : first + linesPerBlock;
        numbers.blocks.push_back(reckoning.block(first, end - first));
    }
    numbers.darkPixels = static_cast<qint64>(strip.pixelCount() - reckoning.ratioCount());
    numbers.before = stepOf(numbers.blocks, strip.firstLine(), &BlockNumbers::before);
    numbers.after = stepOf(numbers.blocks, strip.firstLine(), &BlockNumbers::after);
    if (const std::optional<double> ratio = reckoning.medianRatio()) {
        numbers.disagreement = disagreementOf(numbers.blocks, strip.firstLine(), *ratio);
        numbers.widthNeeded
            = std::ceil((margin + 1.0) * std::fabs(numbers.disagreement->worst) / stepLimit);
    }
    return numbers;
}

} // namespace seamrevise
