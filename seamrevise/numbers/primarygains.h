#pragma once

#include <QtGlobal>

#include <array>
#include <vector>

namespace seamrevise
{

/// How much stored coefficients leave of a primary; 1 is all of it.
struct PrimaryGain
{
    double mean = 0.0;
    double least = 0.0;
    double most = 0.0;
};

/// Red, green and blue over all pixels, of which there is one at least. Of a 3x3 matrix in which
/// 2048 is gain 1 a primary's gain is its own element, that on the diagonal; of layers in which
/// 4096 is gain 1 each one's counts.
std::array<PrimaryGain, 3> primaryGains(const std::vector<unsigned short> &matrices);
std::array<PrimaryGain, 3> primaryGains(const std::vector<qint32> &layers);

} // namespace seamrevise
