#pragma once

#include "seamrevision/export.h"

/// The process-wide settings of layered coefficients. Set them while no engine runs.
class SEAMREVISION_EXPORT MultiLayerConfig
{
public:
    static MultiLayerConfig *instance();

    /// Bytes that one layer of a pixel (three 10-bit codes) takes in the packed form; 4 by
    /// default. With another width the packed output has the size that the width gives, but its
    /// words still lie 4 bytes apart and are cut where their pixel ends.
    unsigned int coefBitWide() const { return m_coefBitWide; }
    void setCoefBitWide(unsigned int bytes) { m_coefBitWide = bytes; }

private:
    MultiLayerConfig() = default;

    unsigned int m_coefBitWide = 4;
};
