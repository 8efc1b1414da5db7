#pragma once

namespace baseCommon
{

/// A pair of counts: columns and rows of a partition grid, or of a band in pixels. A plain value.
class NQSize
{
public:
    NQSize() = default;
    NQSize(int width, int height)
        : m_width(width)
        , m_height(height)
    {
    }

    int width() const { return m_width; }   ///< columns
    int height() const { return m_height; } ///< rows

private:
    int m_width = 0;
    int m_height = 0;
};

} // namespace baseCommon
