#pragma once

#include "seamrevision/revisetypes.h"
#include "seamrevision/zonebaseinfo.h"

#include <QtGlobal>

namespace seamrevision
{

/// Where the pixels of a strip lie in one of its two zones.
struct StripSide
{
    qint64 first = 0;        ///< index of pixel (line 0, position 0)
    qint64 lineStep = 0;     ///< from a line to the next
    qint64 positionStep = 0; ///< from a position to the next

    qint64 pixel(qint64 line, qint64 position) const
    {
        return first + line * lineStep + position * positionStep;
    }
};

/// The pixels that two neighbouring zones share, seen from both zones.
///
/// Positions run across the seam, from the current zone (0) to the next one (width - 1); lines run
/// along it. Only positions from firstPosition to lastPosition are blended, the margins at both
/// ends are not; there is none where the zones do not overlap. A plain value; owns nothing.
/// The strip need not lie inside the zones' arrays: ask fits() first.
struct OverlapStrip
{
    qint32 width = 0;     ///< positions across the seam; <= 0 means that the zones do not overlap
    qint32 lineCount = 0; ///< lines along the seam, of the current zone
    qint64 firstPosition = 0;
    qint64 lastPosition = -1;
    StripSide current;
    StripSide next;

    bool isEmpty() const { return lineCount <= 0 || firstPosition > lastPosition; }
    qint64 positionCount() const { return lastPosition - firstPosition + 1; }

    /// Whether every blended pixel of a side has an index from 0 to pixelCount - 1.
    bool fits(const StripSide &side, qint64 pixelCount) const;
};

/// The strip of two zones; the next one lies to the right of the current one (horizontal) or below
/// it (vertical). A vertical strip takes both zones to be as wide as the current one. Any other
/// direction has no strip: it is empty.
OverlapStrip overlapStrip(const ZoneBaseInfo &current, const ZoneBaseInfo &next,
                          enum_ReviseDirection direction, int edgeMargin);

/// The direction in which a seam is revised: whatever is not horizontal is vertical.
inline enum_ReviseDirection seamDirection(enum_ReviseDirection direction)
{
    return direction == ReviseDirection_Horizontal ? ReviseDirection_Horizontal
                                                   : ReviseDirection_Vertical;
}

} // namespace seamrevision
