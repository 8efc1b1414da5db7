#pragma once

#include "store/screenlayout.h"

#include <vector>

namespace seamrevise
{

/// A made-up LED wall and the measurements from which its partitions were corrected.
///
/// Every LED has its own brightness and its own red, green and blue. Every partition was measured
/// by a camera shot of its own, with its own gain, colour offset, vignetting and noise, and its
/// coefficients make the LEDs alike as that shot saw them. So two partitions give two different
/// corrections, a few per cent apart, for an LED that both shots saw.
///
/// A pure function of the seed, made of integers and of double sums, products and quotients only,
/// so that every compiler and machine makes the same values.
class WallSimulation
{
public:
    explicit WallSimulation(quint64 seed)
        : m_seed(seed)
    {
    }

    /// The single-layer coefficients of a zone as its partition's shot gives them: nine values a
    /// pixel, a 3x3 colour matrix with 2048 as gain 1.
    std::vector<unsigned short> coefficients(const StoredZone &zone) const;

    /// The layered ones: for each layer of a pixel red, green and blue, with 4096 as gain 1.
    std::vector<qint32> layeredCoefficients(const StoredZone &zone, int layerCount) const;

private:
    quint64 m_seed;
};

} // namespace seamrevise
