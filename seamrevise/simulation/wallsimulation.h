#pragma once

#include "store/screenlayout.h"

#include <array>
#include <map>
#include <optional>
#include <vector>

namespace seamrevise
{

/// By how many pixels to the right and downwards a shot was taken for another place.
struct PixelShift
{
    int columns = 0;
    int rows = 0;
};

/// What is the matter with a wall; the values are those of a plausible one.
struct WallTraits
{
    quint64 seed = 1;                      ///< another number, another wall
    baseCommon::NQSize cabinet{160, 90};   ///< pixels of a cabinet
    double batchRange = 0.03;              ///< how far cabinets differ from the mean at most
    double deadPart = 0.0001;              ///< of all LEDs
    double outlyingPart = 0.001;           ///< of all LEDs
    int lowestLayer = 780;                 ///< the mean coefficient of the first layer
    int highestLayer = 2300;               ///< that of the last layer
    bool oneShot = false;                  ///< the whole wall was measured at once
    std::map<int, PixelShift> shifts = {}; ///< of shots, under their partitions' numbers
};

/// A made-up LED wall and the measurements from which its partitions were corrected.
///
/// Every LED has its own brightness and its own red, green and blue. The LEDs of a cabinet come
/// from one batch, which differs from those of its neighbours. Some LEDs are far too dim or too
/// bright, and some give no light at all.
///
/// Every partition was measured by a camera shot of its own, with its own gain, colour offset,
/// vignetting and noise, and its coefficients make the LEDs alike as that shot saw them. So two
/// partitions give two different corrections, a few per cent apart, for an LED that both shots
/// saw. A shot may have been registered off by whole pixels: every pixel then has the coefficients
/// of another LED. For dead LEDs, where there is nothing to correct, they are 0. A wall that was
/// measured by one shot has no seams; what its numbers say is due to noise and rounding.
///
/// Layers are ranges of grey. In the darkest ones LEDs are driven hard for a short time and must be
/// turned down most, so the gains rise from layer to layer; by default they spread over the range
/// of the packed codes, 512 to 2560, and stay below 4096, which is gain 1.
///
/// A pure function of traits and screen, made of integers and of double sums, products and
/// quotients only, so that every compiler and machine makes the same values.
class WallSimulation
{
public:
    WallSimulation(const WallTraits &traits, const NQRect &screen)
        : m_traits(traits)
        , m_screen(screen)
    {
    }

    /// The single-layer coefficients of a zone as its partition's shot gives them: nine values a
    /// pixel, a 3x3 colour matrix with 2048 as gain 1.
    std::vector<unsigned short> coefficients(const StoredZone &zone) const;

    /// The layered ones: for each layer of a pixel red, green and blue, with 4096 as gain 1.
    std::vector<qint32> layeredCoefficients(const StoredZone &zone, int layerCount) const;

    /// The true light of a row of LEDs before any correction, red, green and blue of each, relative
    /// to a mean LED.
    std::vector<float> light(int row) const;

private:
    template <typename Visit>
    void forEachLed(const StoredZone &zone, Visit visit) const;
    StoredZone seenBy(const StoredZone &zone) const;

    const WallTraits m_traits;
    const NQRect m_screen;
};

} // namespace seamrevise
