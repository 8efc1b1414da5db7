#pragma once

#include "seamrevision/export.h"

/// A rectangle of screen pixels; all four edges belong to it. A plain value.
///
/// The default rectangle is empty: (0, 0, -1, -1). An inverted one has no pixel.
class SEAMREVISION_EXPORT NQRect
{
public:
    NQRect() = default;
    NQRect(int left, int top, int right, int bottom)
        : m_left(left)
        , m_top(top)
        , m_right(right)
        , m_bottom(bottom)
    {
    }

    int left() const { return m_left; }     ///< first column
    int top() const { return m_top; }       ///< first row
    int right() const { return m_right; }   ///< last column
    int bottom() const { return m_bottom; } ///< last row

    /// Number of columns, 0 for an inverted rectangle; the largest int where it would not fit.
    int width() const;
    /// Number of pixels, 0 for an inverted rectangle; the largest int where it would not fit.
    int area() const;

private:
    int m_left = 0;
    int m_top = 0;
    int m_right = -1;
    int m_bottom = -1;
};
