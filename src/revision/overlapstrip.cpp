#include "revision/overlapstrip.h"

#include <algorithm>

namespace seamrevision
{

namespace
{

/// Lengths of a strip are signed 32-bit numbers that may be negative; they are not clamped.
qint32 signedLength(int first, int last)
{
    return static_cast<qint32>(qint64{last} - first + 1);
}

OverlapStrip horizontalStrip(const ZoneBaseInfo &current, const ZoneBaseInfo &next)
{
    const qint32 currentWidth = signedLength(current.getBegPixCol(), current.getEndPixCol());
    OverlapStrip strip;
    strip.width = signedLength(next.getBegPixCol(), current.getEndPixCol());
    strip.lineCount = signedLength(current.getBegPixRow(), current.getEndPixRow());
    strip.current = {qint64{currentWidth} - strip.width, currentWidth, 1};
    strip.next = {0, signedLength(next.getBegPixCol(), next.getEndPixCol()), 1};
    return strip;
}

OverlapStrip verticalStrip(const ZoneBaseInfo &current, const ZoneBaseInfo &next)
{
    const qint32 width = signedLength(current.getBegPixCol(), current.getEndPixCol());
    const qint32 height = signedLength(current.getBegPixRow(), current.getEndPixRow());
    OverlapStrip strip;
    strip.width = signedLength(next.getBegPixRow(), current.getEndPixRow());
    strip.lineCount = width;
    strip.current = {(qint64{height} - strip.width) * width, 1, width};
    strip.next = {0, 1, width};
    return strip;
}

bool isInside(qint64 pixel, qint64 pixelCount)
{
    return pixel >= 0 && pixel < pixelCount;
}

} // namespace

bool OverlapStrip::fits(const StripSide &side, qint64 pixelCount) const
{
    if (isEmpty())
        return true;
    // A pixel's index is linear in line and position: it is enough to look at the four corners.
    const qint64 begin = side.pixel(0, firstPosition);
    const qint64 end = side.pixel(0, lastPosition);
    if (!isInside(begin, pixelCount) || !isInside(end, pixelCount))
        return false;
    const qint64 toLastLine = (qint64{lineCount} - 1) * side.lineStep;
    return isInside(begin + toLastLine, pixelCount) && isInside(end + toLastLine, pixelCount);
}

OverlapStrip overlapStrip(const ZoneBaseInfo &current, const ZoneBaseInfo &next,
                          enum_ReviseDirection direction, int edgeMargin)
{
    OverlapStrip strip;
    if (direction == ReviseDirection_Horizontal)
        strip = horizontalStrip(current, next);
    else if (direction == ReviseDirection_Vertical)
        strip = verticalStrip(current, next);
    strip.firstPosition = std::max<qint64>(0, edgeMargin);
    strip.lastPosition = std::min(qint64{strip.width} - 1, qint64{strip.width} - edgeMargin - 1);
    return strip;
}

} // namespace seamrevision
