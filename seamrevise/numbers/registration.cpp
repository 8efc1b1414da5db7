#include "numbers/registration.h"

#include "numbers/median.h"

#include <cmath>

namespace seamrevise
{

namespace
{

constexpr int farthest = 3;
/// Lines of the sample, spread over the strip.
constexpr int sampleLines = 64;
constexpr std::size_t leastPixels = 64;
/// Two good shots of one LED differ by less.
constexpr double usualScatter = 0.005;
/// A shift must bring the scatter below this part of what it was.
constexpr double clearGain = 0.7;

class Sample
{
public:
    Sample(const Strip &strip, const StripLight &light)
        : m_strip(strip)
        , m_light(light)
        , m_lineStep(std::max(1, (strip.lineCount - 2 * farthest) / sampleLines))
    {
    }

    /// The median deviation of the ratios from their median, relative to it.
    std::optional<double> scatter(int lineShift, int positionShift)
    {
        m_ratios.clear();
        for (int line = farthest; line < m_strip.lineCount - farthest; line += m_lineStep) {
            for (int position = farthest; position < m_strip.width - farthest; ++position) {
                const double current = m_light.current[m_strip.index(line, position)];
                const double next
                    = m_light.next[m_strip.index(line + lineShift, position + positionShift)];
                if (current > 0.0 && next > 0.0)
                    m_ratios.push_back(next / current);
            }
        }
        if (m_ratios.size() < leastPixels)
            return {};
        const double middle = *median(m_ratios);
        for (double &ratio : m_ratios)
            ratio = std::fabs(ratio - middle) / middle;
        return median(m_ratios);
    }

private:
    const Strip &m_strip;
    const StripLight &m_light;
    const int m_lineStep;
    std::vector<double> m_ratios;
};

} // namespace

std::optional<Misregistration> misregistration(const Strip &strip, const StripLight &light)
{
    Sample sample(strip, light);
    const std::optional<double> still = sample.scatter(0, 0);
    if (!still || *still < usualScatter)
        return {};
    Misregistration best{0, 0, *still, *still};
    for (int lineShift = -farthest; lineShift <= farthest; ++lineShift) {
        for (int positionShift = -farthest; positionShift <= farthest; ++positionShift) {
            const std::optional<double> scatter = sample.scatter(lineShift, positionShift);
            if (!scatter || *scatter >= best.scatterThere)
                continue;
            best.columns = strip.isHorizontal() ? positionShift : lineShift;
            best.rows = strip.isHorizontal() ? lineShift : positionShift;
            best.scatterThere = *scatter;
        }
    }
    if (best.scatterThere >= clearGain * best.scatter)
        return {};
    return best;
}

} // namespace seamrevise
