#pragma once

#include "engines/linehash.h"
#include "engines/zonevalues.h"
#include "numbers/measurements.h"
#include "process/parallel.h"

#include <QMap>

#include <cstdlib>

namespace seamrevise
{

/// What a recorder has to know of a run.
struct RecordPlan
{
    const ScreenLayout &layout;
    baseCommon::NQSize band;
    std::set<int> corrected;
    LuminanceWeights weights;
    int deliveredCap; ///< of the values that are delivered: noCap for files
};

/// Takes from the zones of a run what its numbers need, while they pass: once as they are stored,
/// once revised. In between it keeps the own values of each partition in strips, and a hash of
/// each line outside them.
///
/// Every zone must cover its partition grown by the band. `Values` is MatrixValues or LayerValues.
template <typename Values>
class ZoneRecorder
{
public:
    using Zone = typename Values::Zone;
    using Value = typename Values::Value;

    ZoneRecorder(const RecordPlan &plan, const Values &values)
        : m_plan(plan)
        , m_values(values)
    {
        for (const SeamPair &seam : seamsOf(plan.layout.grid)) {
            if (plan.corrected.count(seam.current) == 0 || plan.corrected.count(seam.next) == 0)
                continue;
            const Strip strip = stripOf(plan.layout, seam, plan.band);
            if (strip.width == 0)
                continue;
            // A strip that is wider than its partitions reaches others; where those are not
            // corrected, neutral values are delivered.
            const std::vector<double> light(strip.pixelCount(), 1.0);
            m_measured.strips.push_back({strip, {light, light, light}});
        }
    }

    /// A corrected partition's zone, as it is stored.
    void zoneRead(int number, const Zone &zone)
    {
        Before &before = m_before[number];
        PartitionLooks &looks = m_measured.looks[number];
        ChangeAccount &account = m_measured.changes[number];
        before.values.reserve(pixelsInStrips(number) * m_values.perPixel());
        forEachOwnSegment(number, zone, [&](std::size_t first, std::size_t count, bool outside) {
            look(zone, first, count, looks);
            if (outside) {
                before.hashes.push_back(hashOf(zone, first, count));
                countExtremes(zone, first, count, account);
            } else {
                keep(zone, first, count, before.values);
            }
        });
        for (auto &[strip, light] : m_measured.strips) {
            if (strip.seam.current == number)
                measure(zone, strip, strip.rect, noCap, light.current);
            if (strip.seam.next == number)
                measure(zone, strip, strip.rect, noCap, light.next);
        }
    }

    /// The zones after all seams are revised; what was kept of them is given up. Partitions share
    /// no value of what is measured.
    void zonesRevised(const QMap<int, Zone *> &zones)
    {
        const std::vector<int> numbers(m_plan.corrected.begin(), m_plan.corrected.end());
        forEachInParallel(static_cast<int>(numbers.size()), [&](int i) {
            const int number = numbers[static_cast<std::size_t>(i)];
            const Zone &zone = *zones.value(number);
            compare(zone, m_before.at(number), number, m_measured.changes.at(number));
            m_before.at(number) = Before();
            const NQRect &own = m_plan.layout.partitions.at(number);
            for (auto &[strip, light] : m_measured.strips)
                measure(zone, strip, shared(strip.rect, own), m_plan.deliveredCap, light.delivered);
        });
    }

    const WallMeasurements &measured() const { return m_measured; }

private:
    /// What must be remembered of a partition to see what changes.
    struct Before
    {
        std::vector<Value> values;   ///< in strips
        std::vector<quint64> hashes; ///< of lines outside them
    };

    NQRect outsideOf(int number) const
    {
        return outsideStrips(m_plan.layout, number, m_plan.corrected, m_plan.band);
    }

    std::size_t pixelsInStrips(int number) const
    {
        return static_cast<std::size_t>(pixelsOf(m_plan.layout.partitions.at(number))
                                        - pixelsOf(outsideOf(number)));
    }

    /// Calls visit(first pixel of the zone, pixels, whether they lie outside all strips) for the
    /// own pixels of a partition, row by row.
    template <typename Visit>
    void forEachOwnSegment(int number, const Zone &zone, Visit visit) const
    {
        const NQRect rect = rectOf(zone);
        const NQRect &own = m_plan.layout.partitions.at(number);
        const NQRect outside = outsideOf(number);
        for (int row = own.top(); row <= own.bottom(); ++row) {
            const auto segment = [&](int firstCol, int lastCol, bool isOutside) {
                if (firstCol <= lastCol)
                    visit(pixelIndex(rect, row, firstCol),
                          static_cast<std::size_t>(qint64{lastCol} - firstCol + 1), isOutside);
            };
            if (row < outside.top() || row > outside.bottom() || columnsOf(outside) == 0) {
                segment(own.left(), own.right(), false);
                continue;
            }
            segment(own.left(), outside.left() - 1, false);
            segment(outside.left(), outside.right(), true);
            segment(outside.right() + 1, own.right(), false);
        }
    }

    quint64 hashOf(const Zone &zone, std::size_t first, std::size_t count) const
    {
        quint64 hash = 0;
        m_values.forEachRun(zone, first, count, [&](const Value *values, std::size_t pixels) {
            hash = lineHash(hash, values, pixels * m_values.perPixel() * sizeof(Value));
        });
        return hash;
    }

    void keep(const Zone &zone, std::size_t first, std::size_t count,
              std::vector<Value> &kept) const
    {
        m_values.forEachRun(zone, first, count, [&](const Value *values, std::size_t pixels) {
            kept.insert(kept.end(), values, values + pixels * m_values.perPixel());
        });
    }

    void look(const Zone &zone, std::size_t first, std::size_t count, PartitionLooks &looks) const
    {
        m_values.forEachRun(zone, first, count, [&](const Value *values, std::size_t pixels) {
            for (std::size_t pixel = 0; pixel < pixels; ++pixel)
                lookAtPixel(values + pixel * m_values.perPixel(), looks);
        });
        looks.pixels += static_cast<qint64>(count);
        looks.values += static_cast<qint64>(count * m_values.perPixel());
    }

    void lookAtPixel(const Value *values, PartitionLooks &looks) const
    {
        constexpr int nearCap = Values::cap - Values::cap / 100;
        const double luminance = m_values.luminance(values, m_plan.weights, noCap);
        looks.luminanceSum += luminance;
        bool hasValue = false;
        bool hasLargest = false;
        int nearCount = 0;
        for (std::size_t i = 0; i < m_values.perPixel(); ++i) {
            hasValue |= values[i] != 0;
            hasLargest |= values[i] == Values::largest;
            nearCount += values[i] >= nearCap ? 1 : 0;
        }
        looks.nearCap += nearCount;
        looks.saturated += hasLargest ? 1 : 0;
        looks.dead += hasValue ? 0 : 1;
        looks.dark += hasValue && !(luminance > 0.0) ? 1 : 0;
    }

    /// Counts what lies above the cap and at the ends of the packed codes.
    void countExtremes(const Zone &zone, std::size_t first, std::size_t count,
                       ChangeAccount &account) const
    {
        m_values.forEachRun(zone, first, count, [&](const Value *values, std::size_t pixels) {
            const std::size_t valueCount = pixels * m_values.perPixel();
            int above = 0;
            int saturated = 0;
            for (std::size_t i = 0; i < valueCount; ++i) {
                above += values[i] > Values::cap ? 1 : 0;
                saturated += Values::isSaturatedCode(values[i]) ? 1 : 0;
            }
            account.aboveCap += above;
            account.saturatedCodes += saturated;
            account.values += static_cast<qint64>(valueCount);
            account.codes += Values::isPacked ? static_cast<qint64>(valueCount) : 0;
        });
    }

    void compare(const Zone &zone, const Before &before, int number, ChangeAccount &account) const
    {
        auto hash = before.hashes.begin();
        const Value *kept = before.values.data();
        forEachOwnSegment(number, zone, [&](std::size_t first, std::size_t count, bool outside) {
            if (outside) {
                if (hashOf(zone, first, count) != *hash++)
                    account.changedOutside += static_cast<qint64>(count);
                return;
            }
            m_values.forEachRun(zone, first, count, [&](const Value *values, std::size_t pixels) {
                const std::size_t valueCount = pixels * m_values.perPixel();
                countChanges(kept, values, valueCount, account);
                kept += valueCount;
            });
            countExtremes(zone, first, count, account);
        });
    }

    static void countChanges(const Value *before, const Value *after, std::size_t count,
                             ChangeAccount &account)
    {
        for (std::size_t i = 0; i < count; ++i) {
            const qint64 change = std::abs(qint64{after[i]} - before[i]);
            account.changed += change != 0 ? 1 : 0;
            account.sum += change;
            account.largest = std::max(account.largest, change);
        }
    }

    /// Fills the luminances of a rectangle of a strip from a zone.
    void measure(const Zone &zone, const Strip &strip, const NQRect &rect, int cap,
                 std::vector<double> &light) const
    {
        const NQRect zoneRect = rectOf(zone);
        for (int row = rect.top(); row <= rect.bottom(); ++row) {
            for (int col = rect.left(); col <= rect.right(); ++col)
                light[strip.indexOfPixel(row, col)] = m_values.luminance(
                    m_values.pixel(zone, pixelIndex(zoneRect, row, col)), m_plan.weights, cap);
        }
    }

    const RecordPlan m_plan;
    const Values m_values;
    std::map<int, Before> m_before;
    WallMeasurements m_measured;
};

} // namespace seamrevise
