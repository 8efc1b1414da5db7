#pragma once

#include "engines/zonevalues.h"
#include "exchange/coefficientfile.h"
#include "store/screenlayout.h"

#include <QMap>

#include <set>

namespace seamrevise
{

/// How much of what was read of a partition is not as a revision has it.
struct ValueMismatch
{
    qint64 values = 0;
    int row = 0; ///< where the first of them is: the pixel on the screen
    int column = 0;
};

/// The zones of a revision while they live, as what is read of files or tables is held against
/// them. Calls for different partitions may run at once.
class RevisedZones
{
public:
    virtual ~RevisedZones() = default;

    /// Compares what a file of that format holds, or a table, with the partition's own pixels of
    /// its zone, or with neutral values where it is not corrected.
    /// @param cap  what larger values of the zone count as: noCap for files
    virtual ValueMismatch compare(int number, const CoefficientFormat &format,
                                  const std::vector<qint32> &read, int cap) const = 0;
};

/// The zones of one kind of engine. `Values` is MatrixValues or LayerValues.
template <typename Values>
class ZoneComparison : public RevisedZones
{
public:
    using Zone = typename Values::Zone;

    ZoneComparison(const ScreenLayout &layout, const std::set<int> &corrected, const Values &values,
                   const QMap<int, Zone *> &zones)
        : m_layout(layout)
        , m_corrected(corrected)
        , m_values(values)
        , m_zones(zones)
    {
    }

    ValueMismatch compare(int number, const CoefficientFormat &format,
                          const std::vector<qint32> &read, int cap) const override
    {
        const auto perPixel = static_cast<std::size_t>(format.valuesPerPixel);
        const NQRect &rect = m_layout.partitions.at(number);
        const auto neutral = m_values.neutralPixel();
        const Zone *const zone = m_corrected.count(number) != 0 ? m_zones.value(number) : nullptr;
        const NQRect zoneRect = zone ? rectOf(*zone) : NQRect();
        std::vector<qint32> expected(perPixel);
        const qint32 *found = read.data();
        ValueMismatch mismatch;
        for (int row = rect.top(); row <= rect.bottom(); ++row) {
            for (int col = rect.left(); col <= rect.right(); ++col, found += perPixel) {
                const auto *const pixel
                    = zone ? m_values.pixel(*zone, pixelIndex(zoneRect, row, col)) : neutral.data();
                m_values.deliver(pixel, cap, expected);
                count(expected, found, row, col, mismatch);
            }
        }
        return mismatch;
    }

private:
    static void count(const std::vector<qint32> &expected, const qint32 *found, int row, int col,
                      ValueMismatch &mismatch)
    {
        for (const qint32 value : expected) {
            if (value == *found++)
                continue;
            if (mismatch.values++ == 0) {
                mismatch.row = row;
                mismatch.column = col;
            }
        }
    }

    const ScreenLayout &m_layout;
    const std::set<int> &m_corrected;
    const Values &m_values;
    const QMap<int, Zone *> &m_zones;
};

} // namespace seamrevise
