#pragma once

#include "seamrevision/coefszoneinfo.h"

#include <vector>

/// A zone of layered coefficients. The inherited 16-bit array stays unused.
class MultiLayerCoefZoneInfo : public CoefsZoneInfo
{
public:
    /// One row per pixel of the zone's rectangle, pixels row by row; a row holds 3 * layer count
    /// signed values in which 4096 is neutral.
    std::vector<std::vector<int>> m_multiLayerCoefs;
    /// The same coefficients as packed 10-bit codes: 4 * layer count bytes a pixel.
    std::vector<unsigned char> m_zipCoefs;
};
