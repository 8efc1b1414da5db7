#include "simulation/wallsimulation.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace seamrevise
{

namespace
{

static_assert(FLT_EVAL_METHOD == 0, "a wall's bytes depend on plain double arithmetic");

constexpr int colourCount = 3;
constexpr double singleLayerUnit = 2048.0;

/// What the correction makes of every LED, relative to a mean one at full drive.
constexpr double targetBrightness = 0.88;
/// Relative standard deviations.
constexpr double ledSpread = 0.018;
constexpr double ledColourSpread = 0.008;
constexpr double ledLayerSpread = 0.004;
constexpr double shotNoise = 0.004;
/// Relative half ranges.
constexpr double shotGainRange = 0.03;
constexpr double shotColourRange = 0.008;
constexpr double shotLayerRange = 0.006;

/// Half range of the colours of a batch, relative to that of its brightness.
constexpr double batchColourPart = 0.25;
/// The light of outlying LEDs, relative to a mean one.
constexpr double dimLeast = 0.55;
constexpr double dimRange = 0.25;
constexpr double brightLeast = 1.2;
constexpr double brightRange = 0.15;

/// How much of the light of colour `from` is added to colour `to` when its gain is 1: the usual
/// small off-diagonal part of a colour correction.
constexpr double crossTalk[colourCount][colourCount] = {
    {0.0, 0.040, 0.012},
    {0.025, 0.0, 0.018},
    {0.008, 0.030, 0.0},
};

/// Keeps the random numbers of different quantities apart.
enum Quantity : quint64
{
    Led_Brightness = 1,
    Led_Colour,
    Led_CrossTalk,
    Led_Layer,
    Shot_Gain,
    Shot_Colour,
    Shot_Vignetting,
    Shot_CentreCol,
    Shot_CentreRow,
    Shot_Noise,
    Shot_Layer,
    Shot_LayerNoise,
    Led_Fate,
    Led_Outlying,
    Batch_Brightness,
    Batch_Colour
};

/// Scrambles a number so that neighbouring ones have nothing in common.
quint64 scrambled(quint64 value)
{
    value += 0x9E3779B97F4A7C15U;
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31);
}

quint64 chained(quint64 key, quint64 value)
{
    return scrambled(key ^ scrambled(value));
}

/// Uniform in [-1, 1).
double uniform(quint64 random)
{
    constexpr double half = 4503599627370496.0; // 2^52, so that every step is exact
    return static_cast<double>(random >> 11) / half - 1.0;
}

/// Uniform in [0, 1).
double share(quint64 random)
{
    return 0.5 * uniform(random) + 0.5;
}

/// Near enough to a normal distribution of standard deviation 1; never beyond 3.47.
double bell(quint64 random)
{
    qint64 sum = -131070; // four numbers of 16 bits, less their mean
    for (int shift = 0; shift < 64; shift += 16)
        sum += static_cast<qint64>((random >> shift) & 0xFFFFU);
    return static_cast<double>(sum) / 37837.0;
}

/// The random numbers of one thing, which its key tells from all others.
class Draws
{
public:
    explicit Draws(quint64 key)
        : m_key(key)
    {
    }
    quint64 operator()(Quantity quantity, int index = 0) const
    {
        return scrambled(m_key + 4096 * static_cast<quint64>(index) + quantity);
    }

private:
    quint64 m_key;
};

/// One camera shot of a zone.
class Shot
{
public:
    Shot(quint64 seed, const StoredZone &zone)
        : m_random(chained(seed, static_cast<quint64>(zone.number)))
        , m_gain(1.0 + shotGainRange * uniform(m_random(Shot_Gain)))
        , m_vignetting(0.012 + 0.006 * uniform(m_random(Shot_Vignetting)))
        , m_halfWidth(static_cast<double>(columnsOf(zone.rect)) / 2.0)
        , m_halfHeight(static_cast<double>(rowsOf(zone.rect)) / 2.0)
        , m_centreCol(zone.rect.left()
                      + m_halfWidth * (1.0 + 0.1 * uniform(m_random(Shot_CentreCol))))
        , m_centreRow(zone.rect.top()
                      + m_halfHeight * (1.0 + 0.1 * uniform(m_random(Shot_CentreRow))))
    {
        for (int colour = 0; colour < colourCount; ++colour)
            m_colour[colour] = 1.0 + shotColourRange * uniform(m_random(Shot_Colour, colour));
    }

    /// What the camera makes of a pixel's light, but for colour and noise.
    double brightnessAt(int row, int col) const
    {
        const double across = (col - m_centreCol) / m_halfWidth;
        const double down = (row - m_centreRow) / m_halfHeight;
        return m_gain * (1.0 - m_vignetting * (across * across + down * down));
    }

    double colour(int index) const { return m_colour[index]; }

    double layer(int value) const
    {
        return 1.0 + shotLayerRange * uniform(m_random(Shot_Layer, value));
    }

    double noise(Quantity quantity, quint64 pixel, int value) const
    {
        return 1.0 + shotNoise * bell(chained(m_random(quantity, value), pixel));
    }

private:
    Draws m_random;
    double m_gain;
    double m_vignetting;
    double m_halfWidth;
    double m_halfHeight;
    double m_centreCol;
    double m_centreRow;
    double m_colour[colourCount] = {};
};

quint64 pixelKey(int row, int col)
{
    return (static_cast<quint64>(row) << 32) + static_cast<quint64>(col);
}

/// The LED of one pixel, the same for every shot that sees it.
class Led
{
public:
    Led(const WallTraits &traits, int row, int col)
        : m_random(chained(traits.seed, pixelKey(row, col)))
        , m_batch(chained(traits.seed,
                          ~pixelKey(row / traits.cabinet.height(), col / traits.cabinet.width())))
        , m_batchRange(traits.batchRange)
        , m_brightness((1.0 + ledSpread * bell(m_random(Led_Brightness)))
                       * (1.0 + m_batchRange * uniform(m_batch(Batch_Brightness))) * fate(traits))
    {
    }

    bool isDead() const { return m_brightness == 0.0; }

    double brightness(int colour) const
    {
        return m_brightness * (1.0 + ledColourSpread * bell(m_random(Led_Colour, colour)))
            * (1.0 + batchColourPart * m_batchRange * uniform(m_batch(Batch_Colour, colour)));
    }

    double crossTalk(int index) const { return 1.0 + 0.2 * bell(m_random(Led_CrossTalk, index)); }

    double layer(int value) const
    {
        return 1.0 + ledLayerSpread * bell(m_random(Led_Layer, value));
    }

private:
    /// 1 for most; what is left of its light for a dead or an outlying LED.
    double fate(const WallTraits &traits) const
    {
        const double drawn = share(m_random(Led_Fate));
        if (drawn < traits.deadPart)
            return 0.0;
        if (drawn >= traits.deadPart + traits.outlyingPart)
            return 1.0;
        const double side = uniform(m_random(Led_Outlying));
        return side < 0.0 ? dimLeast - dimRange * side : brightLeast + brightRange * side;
    }

    Draws m_random;
    Draws m_batch;
    double m_batchRange;
    double m_brightness;
};

int rounded(double value)
{
    return static_cast<int>(std::lround(value));
}

/// What the correction makes of every LED in a layer, as a coefficient of a mean one.
double layerTarget(const WallTraits &traits, int layer, int layerCount)
{
    const double place = layerCount > 1 ? static_cast<double>(layer) / (layerCount - 1) : 1.0;
    return traits.lowestLayer + (traits.highestLayer - traits.lowestLayer) * place;
}

} // namespace

/// Calls visit(row, col) for the LED that the shot took for each pixel of a zone, row by row.
template <typename Visit>
void WallSimulation::forEachLed(const StoredZone &zone, Visit visit) const
{
    const auto found = m_traits.shifts.find(zone.number);
    const PixelShift shift = found == m_traits.shifts.end() ? PixelShift() : found->second;
    for (int row = zone.rect.top(); row <= zone.rect.bottom(); ++row) {
        const int ledRow = std::clamp(row - shift.rows, m_screen.top(), m_screen.bottom());
        for (int col = zone.rect.left(); col <= zone.rect.right(); ++col)
            visit(ledRow, std::clamp(col - shift.columns, m_screen.left(), m_screen.right()));
    }
}

/// What was measured together with a zone, under the number of the shot.
StoredZone WallSimulation::seenBy(const StoredZone &zone) const
{
    return m_traits.oneShot ? StoredZone{0, m_screen} : zone;
}

std::vector<unsigned short> WallSimulation::coefficients(const StoredZone &zone) const
{
    constexpr std::size_t pixelValues = std::size_t{colourCount} * colourCount;
    const Shot shot(m_traits.seed, seenBy(zone));
    std::vector<unsigned short> values;
    values.reserve(static_cast<std::size_t>(pixelsOf(zone.rect)) * pixelValues);
    forEachLed(zone, [&](int row, int col) {
        const Led led(m_traits, row, col);
        if (led.isDead()) {
            values.resize(values.size() + pixelValues);
            return;
        }
        const double seen = shot.brightnessAt(row, col);
        for (int to = 0; to < colourCount; ++to) {
            const double measured = led.brightness(to) * seen * shot.colour(to)
                * shot.noise(Shot_Noise, pixelKey(row, col), to);
            const double gain = targetBrightness * singleLayerUnit / measured;
            for (int from = 0; from < colourCount; ++from) {
                const double part = from == to
                    ? 1.0
                    : crossTalk[to][from] * led.crossTalk(to * colourCount + from);
                values.push_back(static_cast<unsigned short>(rounded(gain * part)));
            }
        }
    });
    return values;
}

std::vector<qint32> WallSimulation::layeredCoefficients(const StoredZone &zone,
                                                        int layerCount) const
{
    const Shot shot(m_traits.seed, seenBy(zone));
    const int valueCount = colourCount * layerCount;
    std::vector<double> targets; // of each value, as the shot sees its layer
    targets.reserve(static_cast<std::size_t>(valueCount));
    for (int value = 0; value < valueCount; ++value)
        targets.push_back(layerTarget(m_traits, value / colourCount, layerCount)
                          / shot.layer(value));

    std::vector<qint32> values;
    values.reserve(static_cast<std::size_t>(pixelsOf(zone.rect)) * targets.size());
    forEachLed(zone, [&](int row, int col) {
        const Led led(m_traits, row, col);
        if (led.isDead()) {
            values.resize(values.size() + targets.size());
            return;
        }
        const double seen = shot.brightnessAt(row, col);
        double light[colourCount];
        for (int colour = 0; colour < colourCount; ++colour)
            light[colour] = led.brightness(colour) * seen * shot.colour(colour);
        for (int value = 0; value < valueCount; ++value) {
            const double measured = light[value % colourCount] * led.layer(value)
                * shot.noise(Shot_LayerNoise, pixelKey(row, col), value);
            values.push_back(rounded(targets[static_cast<std::size_t>(value)] / measured));
        }
    });
    return values;
}

std::vector<float> WallSimulation::light(int row) const
{
    std::vector<float> values;
    for (int col = m_screen.left(); col <= m_screen.right(); ++col) {
        const Led led(m_traits, row, col);
        for (int colour = 0; colour < colourCount; ++colour)
            values.push_back(static_cast<float>(led.brightness(colour)));
    }
    return values;
}

} // namespace seamrevise
