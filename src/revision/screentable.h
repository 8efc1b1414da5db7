#pragma once

#include "seamrevision/nqrect.h"

#include <QtGlobal>

#include <algorithm>

namespace seamrevision
{

/// Where pixels of the screen lie in a whole-screen table: row by row, one entry a pixel.
class ScreenTable
{
public:
    explicit ScreenTable(const NQRect &screen)
        : m_left(screen.left())
        , m_top(screen.top())
        , m_width(screen.width())
        , m_pixelCount(screen.area())
    {
    }

    /// Index of the pixel; it may lie outside the table for pixels outside the screen.
    qint64 pixel(qint64 row, qint64 col) const { return (row - m_top) * m_width + (col - m_left); }

    /// Calls visit(firstPixel, pixelCount) for every row of a rectangle, cut to the part whose
    /// indexes lie inside the table. Rows as wide as the screen run into each other and are one
    /// run, so that no pixel is visited twice, however far the rectangle reaches. The screen must
    /// have a pixel.
    template <typename Visitor>
    void forEachRun(int firstRow, int firstCol, qint64 width, qint64 height, Visitor visit) const
    {
        const qint64 start = pixel(firstRow, firstCol);
        if (start >= m_pixelCount || height <= 0)
            return;
        if (width >= m_width) {
            visitInside(start, start + (height - 1) * m_width + width, visit);
            return;
        }
        const qint64 hiddenRows = std::max<qint64>(0, -(start + width) / m_width);
        for (qint64 row = hiddenRows; row < height; ++row) {
            const qint64 first = start + row * m_width;
            if (first >= m_pixelCount)
                break;
            visitInside(first, first + width, visit);
        }
    }

private:
    template <typename Visitor>
    void visitInside(qint64 first, qint64 behindLast, Visitor &visit) const
    {
        const qint64 begin = std::max<qint64>(0, first);
        const qint64 end = std::min(behindLast, m_pixelCount);
        if (begin < end)
            visit(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
    }

    qint64 m_left;
    qint64 m_top;
    qint64 m_width;
    qint64 m_pixelCount;
};

} // namespace seamrevision
