#include "simulation/wallsimulation.h"

#include <cfloat>
#include <cmath>

namespace seamrevise
{

namespace
{

static_assert(FLT_EVAL_METHOD == 0, "a wall's bytes depend on plain double arithmetic");

constexpr int colourCount = 3;
constexpr double singleLayerUnit = 2048.0;
constexpr double layeredUnit = 4096.0;

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
    Shot_LayerNoise
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

/// Near enough to a normal distribution of standard deviation 1; never beyond 3.47.
double bell(quint64 random)
{
    qint64 sum = -131070; // four numbers of 16 bits, less their mean
    for (int shift = 0; shift < 64; shift += 16)
        sum += static_cast<qint64>((random >> shift) & 0xFFFFU);
    return static_cast<double>(sum) / 37837.0;
}

/// One camera shot of a zone.
class Shot
{
public:
    Shot(quint64 seed, const StoredZone &zone)
        : m_key(chained(seed, static_cast<quint64>(zone.number)))
        , m_gain(1.0 + shotGainRange * uniform(random(Shot_Gain)))
        , m_vignetting(0.012 + 0.006 * uniform(random(Shot_Vignetting)))
        , m_halfWidth(static_cast<double>(columnsOf(zone.rect)) / 2.0)
        , m_halfHeight(static_cast<double>(rowsOf(zone.rect)) / 2.0)
        , m_centreCol(zone.rect.left()
                      + m_halfWidth * (1.0 + 0.1 * uniform(random(Shot_CentreCol))))
        , m_centreRow(zone.rect.top()
                      + m_halfHeight * (1.0 + 0.1 * uniform(random(Shot_CentreRow))))
    {
        for (int colour = 0; colour < colourCount; ++colour)
            m_colour[colour] = 1.0 + shotColourRange * uniform(random(Shot_Colour, colour));
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
        return 1.0 + shotLayerRange * uniform(random(Shot_Layer, value));
    }

    double noise(Quantity quantity, quint64 pixel, int value) const
    {
        return 1.0 + shotNoise * bell(chained(random(quantity, value), pixel));
    }

private:
    quint64 random(Quantity quantity, int index = 0) const
    {
        return scrambled(m_key + 4096 * static_cast<quint64>(index) + quantity);
    }

    quint64 m_key;
    double m_gain;
    double m_vignetting;
    double m_halfWidth;
    double m_halfHeight;
    double m_centreCol;
    double m_centreRow;
    double m_colour[colourCount] = {};
};

/// The LEDs of one pixel, the same for every shot that sees them.
class Leds
{
public:
    Leds(quint64 seed, quint64 pixel)
        : m_key(chained(seed, pixel))
        , m_brightness(1.0 + ledSpread * bell(random(Led_Brightness)))
    {
    }

    double brightness(int colour) const
    {
        return m_brightness * (1.0 + ledColourSpread * bell(random(Led_Colour, colour)));
    }

    double crossTalk(int index) const { return 1.0 + 0.2 * bell(random(Led_CrossTalk, index)); }

    double layer(int value) const { return 1.0 + ledLayerSpread * bell(random(Led_Layer, value)); }

private:
    quint64 random(Quantity quantity, int index = 0) const
    {
        return scrambled(m_key + 4096 * static_cast<quint64>(index) + quantity);
    }

    quint64 m_key;
    double m_brightness;
};

quint64 pixelKey(int row, int col)
{
    return (static_cast<quint64>(row) << 32) + static_cast<quint64>(col);
}

int rounded(double value)
{
    return static_cast<int>(std::lround(value));
}

/// Calls visit(row, col) for every pixel of a zone, row by row.
template <typename Visit>
void forEachPixel(const NQRect &rect, Visit visit)
{
    for (int row = rect.top(); row <= rect.bottom(); ++row) {
        for (int col = rect.left(); col <= rect.right(); ++col)
            visit(row, col);
    }
}

} // namespace

std::vector<unsigned short> WallSimulation::coefficients(const StoredZone &zone) const
{
    const Shot shot(m_seed, zone);
    std::vector<unsigned short> values;
    values.reserve(static_cast<std::size_t>(pixelsOf(zone.rect)) * colourCount * colourCount);
    forEachPixel(zone.rect, [&](int row, int col) {
        const quint64 pixel = pixelKey(row, col);
        const Leds leds(m_seed, pixel);
        const double seen = shot.brightnessAt(row, col);
        for (int to = 0; to < colourCount; ++to) {
            const double measured
                = leds.brightness(to) * seen * shot.colour(to) * shot.noise(Shot_Noise, pixel, to);
            const double gain = targetBrightness * singleLayerUnit / measured;
            for (int from = 0; from < colourCount; ++from) {
                const double part = from == to
                    ? 1.0
                    : crossTalk[to][from] * leds.crossTalk(to * colourCount + from);
                values.push_back(static_cast<unsigned short>(rounded(gain * part)));
            }
        }
    });
    return values;
}

std::vector<qint32> WallSimulation::layeredCoefficients(const StoredZone &zone,
                                                        int layerCount) const
{
    const Shot shot(m_seed, zone);
    const int valueCount = colourCount * layerCount;
    std::vector<double> shotLayers;
    shotLayers.reserve(static_cast<std::size_t>(valueCount));
    for (int value = 0; value < valueCount; ++value)
        shotLayers.push_back(shot.layer(value));

    std::vector<qint32> values;
    values.reserve(static_cast<std::size_t>(pixelsOf(zone.rect))
                   * static_cast<std::size_t>(valueCount));
    forEachPixel(zone.rect, [&](int row, int col) {
        const quint64 pixel = pixelKey(row, col);
        const Leds leds(m_seed, pixel);
        const double seen = shot.brightnessAt(row, col);
        double light[colourCount];
        for (int colour = 0; colour < colourCount; ++colour)
            light[colour] = leds.brightness(colour) * seen * shot.colour(colour);
        for (int value = 0; value < valueCount; ++value) {
            const double measured = light[value % colourCount] * leds.layer(value)
                * shotLayers[static_cast<std::size_t>(value)]
                * shot.noise(Shot_LayerNoise, pixel, value);
            values.push_back(rounded(targetBrightness * layeredUnit / measured));
        }
    });
    return values;
}

} // namespace seamrevise
