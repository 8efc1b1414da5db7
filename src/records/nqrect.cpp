#include "seamrevision/nqrect.h"

#include "records/pixelmath.h"

using seamrevision::saturatedInt;
using seamrevision::sideLength;

int NQRect::width() const
{
    return static_cast<int>(sideLength(m_left, m_right));
}

int NQRect::area() const
{
    return saturatedInt(sideLength(m_left, m_right) * sideLength(m_top, m_bottom));
}
