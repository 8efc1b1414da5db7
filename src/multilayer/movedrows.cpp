#include "multilayer/movedrows.h"

#include "records/pixelmath.h"

#include <algorithm>

namespace seamrevision
{

namespace
{

CoefTable::iterator rowAt(CoefTable &table, quint64 pixel)
{
    return table.begin() + static_cast<std::ptrdiff_t>(pixel);
}

} // namespace

MovedRows::MovedRows(const NQRect &screen, CoefTable &table)
    : m_screen(screen)
    , m_table(table)
    , m_covered(table.size())
{
}

qint64 MovedRows::firstPixel(const ZoneBaseInfo &zone, const PixelWindow &window, qint64 row) const
{
    return m_screen.pixel(zone.getBegPixRow() + window.firstRow + row,
                          zone.getBegPixCol() + window.firstCol);
}

bool MovedRows::haveRoomFor(const MultiLayerCoefZoneInfo &zone, const PixelWindow &window) const
{
    const auto columns = static_cast<quint64>(window.colCount);
    for (qint64 row = 0; row < window.rowCount; ++row) {
        const qint64 target = firstPixel(zone, window, row);
        if (window.rowStart(row) + columns > zone.m_multiLayerCoefs.size() || target < 0
            || static_cast<quint64>(target) + columns > m_table.size())
            return false;
    }
    return true;
}

void MovedRows::take(MultiLayerCoefZoneInfo &zone, const PixelWindow &window)
{
    for (qint64 row = 0; row < window.rowCount; ++row) {
        const qint64 target = firstPixel(zone, window, row);
        const auto source = rowAt(zone.m_multiLayerCoefs, window.rowStart(row));
        const auto moved = std::swap_ranges(source, source + window.colCount,
                                            rowAt(m_table, static_cast<quint64>(target)));
        std::for_each(moved - window.colCount, moved, capRow);
        std::fill_n(m_covered.begin() + target, window.colCount, true);
    }
}

void MovedRows::fillUncovered(std::size_t valuesPerPixel)
{
    for (std::size_t pixel = 0; pixel < m_table.size(); ++pixel) {
        if (!m_covered[pixel])
            m_table[pixel].assign(valuesPerPixel, 0);
    }
}

void moveOwnRows(MultiLayerCoefZoneInfo &zone, const PixelWindow &window,
                 MultiLayerCoefZoneInfo &areaZone)
{
    const PixelWindow places = windowInside(areaZone, zone);
    for (qint64 row = 0; row < window.rowCount; ++row) {
        const auto source = rowAt(zone.m_multiLayerCoefs, window.rowStart(row));
        std::swap_ranges(source, source + window.colCount,
                         rowAt(areaZone.m_multiLayerCoefs, places.rowStart(row)));
    }
}

} // namespace seamrevision
