#pragma once

#include "multilayer/coefs.h"
#include "revision/pixelwindow.h"
#include "revision/screentable.h"
#include "seamrevision/multilayercoefzoneinfo.h"

#include <cstddef>
#include <vector>

namespace seamrevision
{

/// The rows of zones, moved into a whole-screen table instead of copied: a row is a block of memory
/// of its own, and what a copy costs is to ask for it and to give it back.
///
/// The table must have a row, empty and without memory, for every pixel of the screen, and must
/// live while rows are moved.
class MovedRows
{
public:
    MovedRows(const NQRect &screen, CoefTable &table);

    /// Whether zone and table both have every pixel of a window of the zone.
    bool haveRoomFor(const MultiLayerCoefZoneInfo &zone, const PixelWindow &window) const;

    /// Moves the rows of a window, which must have room, and caps them. Where another zone has been
    /// before, the later one counts.
    void take(MultiLayerCoefZoneInfo &zone, const PixelWindow &window);

    /// Gives the pixels that no zone covered their zeros.
    void fillUncovered(std::size_t valuesPerPixel);

private:
    qint64 firstPixel(const ZoneBaseInfo &zone, const PixelWindow &window, qint64 row) const;

    const ScreenTable m_screen;
    CoefTable &m_table;
    std::vector<bool> m_covered;
};

/// Moves the rows of a window of a zone to the place that they have in an area zone, whose table
/// has a row for each of its pixels.
void moveOwnRows(MultiLayerCoefZoneInfo &zone, const PixelWindow &window,
                 MultiLayerCoefZoneInfo &areaZone);

} // namespace seamrevision
