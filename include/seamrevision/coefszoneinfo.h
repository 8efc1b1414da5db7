#pragma once

#include "seamrevision/zonebaseinfo.h"

#include <vector>

/// A zone of single-layer coefficients.
///
/// Nine unsigned 16-bit values a pixel, a 3x3 colour matrix row by row in which 2048 is gain 1;
/// pixels row by row over the zone's rectangle. Value k of the pixel at zone-relative row r and
/// column c is m_arrayData[(r * width + c) * 9 + k].
class CoefsZoneInfo : public ZoneBaseInfo
{
public:
    std::vector<unsigned short> getArrayData() const { return m_arrayData; } ///< a copy
    void setArrayData(const std::vector<unsigned short> &arrayData) { m_arrayData = arrayData; }
    /// Number of 16-bit values.
    unsigned int getCoefsSize() const { return static_cast<unsigned int>(m_arrayData.size()); }

    std::vector<unsigned short> m_arrayData;
};
