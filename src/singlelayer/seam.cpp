#include "seamrevision/partitionmerge.h"

#include "records/trace.h"
#include "revision/blend.h"
#include "revision/overlapstrip.h"
#include "revision/seamlookup.h"
#include "singlelayer/coefs.h"

#include <algorithm>

using namespace seamrevision;

namespace
{

/// A pixel passes the index check unless its last value lies more than one place beyond the
/// array. The check is an agreement with hosts; a value that is not there is then left alone.
qint64 checkedPixels(const std::vector<unsigned short> &coefs)
{
    return static_cast<qint64>((coefs.size() + 1) / valuesPerPixel);
}

/// A run of a zone's values, cut off at the end of the array.
struct ValueRun
{
    ValueRun(std::vector<unsigned short> &coefs, qint64 firstPixel, qint64 pixelCount)
        : values(coefs.data() + static_cast<std::size_t>(firstPixel) * valuesPerPixel)
        , count(std::min(static_cast<std::size_t>(pixelCount) * valuesPerPixel,
                         static_cast<std::size_t>(coefs.data() + coefs.size() - values)))
    {
    }

    unsigned short *values;
    std::size_t count;
};

/// A strip together with the arrays that it lies in; every pixel has passed the index check.
class SingleLayerStrip
{
public:
    SingleLayerStrip(const OverlapStrip &strip, std::vector<unsigned short> &current,
                     std::vector<unsigned short> &next)
        : m_strip(strip)
        , m_current(current)
        , m_next(next)
    {
    }

    /// Line by line: the positions of a line are neighbours in both arrays. The order is fixed,
    /// since the pixels of a strip that is wider than the next zone repeat from line to line.
    void blendLines() const
    {
        const std::vector<qint32> positions = positionOfEachValue();
        for (qint64 line = 0; line < m_strip.lineCount; ++line) {
            if (line + linesAhead < m_strip.lineCount)
                fetch(runsFrom(line + linesAhead, m_strip.firstPosition, m_strip.positionCount()));
            const Runs runs = runsFrom(line, m_strip.firstPosition, m_strip.positionCount());
            blendRamp(runs.current, runs.next, runs.count, positions.data(), m_strip.width);
        }
    }

    /// Position by position: the lines are neighbours in both arrays.
    void blendPositions() const
    {
        for (qint64 position = m_strip.firstPosition; position <= m_strip.lastPosition;
             ++position) {
            const Runs runs = runsFrom(0, position, m_strip.lineCount);
            blendLevel(runs.current, runs.next, runs.count, static_cast<qint32>(position),
                       m_strip.width);
        }
    }

private:
    struct Runs
    {
        unsigned short *current;
        unsigned short *next;
        std::size_t count;
    };

    /// A line is too short for the processor to foresee the next one; three ahead are enough.
    static constexpr qint64 linesAhead = 3;

    static void fetch(const Runs &runs)
    {
#ifdef __GNUC__
        constexpr std::size_t cacheLineValues = 64 / sizeof(unsigned short);
        for (std::size_t i = 0; i < runs.count; i += cacheLineValues) {
            __builtin_prefetch(runs.current + i, 1);
            __builtin_prefetch(runs.next + i, 1);
        }
#else
        Q_UNUSED(runs)
#endif
    }

    Runs runsFrom(qint64 line, qint64 position, qint64 pixelCount) const
    {
        const ValueRun current(m_current, m_strip.current.pixel(line, position), pixelCount);
        const ValueRun next(m_next, m_strip.next.pixel(line, position), pixelCount);
        return {current.values, next.values, std::min(current.count, next.count)};
    }

    std::vector<qint32> positionOfEachValue() const
    {
        std::vector<qint32> positions;
        positions.reserve(static_cast<std::size_t>(m_strip.positionCount()) * valuesPerPixel);
        for (qint64 position = m_strip.firstPosition; position <= m_strip.lastPosition; ++position)
            positions.insert(positions.end(), valuesPerPixel, static_cast<qint32>(position));
        return positions;
    }

    const OverlapStrip &m_strip;
    std::vector<unsigned short> &m_current;
    std::vector<unsigned short> &m_next;
};

struct IndexTags
{
    int current;
    int next;
};

/// Reports the first pixel, in the order of lines and positions, that lies in one of the arrays
/// but not in the other, or in neither.
void reportFirstMisfit(const Trace &trace, const IndexTags &tags, const OverlapStrip &strip,
                       qint64 currentPixels, qint64 nextPixels)
{
    const auto misses = [](qint64 pixel, qint64 count) { return pixel < 0 || pixel >= count; };
    for (qint64 line = 0; line < strip.lineCount; ++line) {
        for (qint64 pos = strip.firstPosition; pos <= strip.lastPosition; ++pos) {
            if (misses(strip.current.pixel(line, pos), currentPixels)) {
                trace.critical(tags.current,
                               "The index of currentArea cofficient is out of range!");
                return;
            }
            if (misses(strip.next.pixel(line, pos), nextPixels)) {
                trace.critical(tags.next, "The index of nextArea cofficient is out of range!");
                return;
            }
        }
    }
}

} // namespace

enum_ErrCodeType PartitionMerge::startRevise(enum_ReviseDirection direction, int currentIndex,
                                             int nextIndex, QMap<QString, AreaInfoBase *> areas,
                                             QMap<int, CoefsZoneInfo *> coefs)
{
    const Trace trace(QStringLiteral("PartitionMerge::startRevise"));
    const SeamLookupTags tags{321, {326, 333}, {338, 345}, {353, 359}, {368, 374}};
    SeamLookup<CoefsZoneInfo> seam(trace, tags, areas, coefs);
    if (!seam.find(currentIndex, nextIndex))
        return seam.code();
    return partitionCoefRevise(seam.current(), seam.next(), seamDirection(direction), m_edgeMargin);
}

enum_ErrCodeType PartitionMerge::partitionCoefRevise(CoefsZoneInfo *current, CoefsZoneInfo *next,
                                                     enum_ReviseDirection direction, int edgeMargin)
{
    const Trace trace(QStringLiteral("PartitionMerge::partitionCoefRevise"));
    trace.debug(505, "start!");
    if (!current) {
        trace.critical(509, "The current pCoefsZoneInfo is nullptr!");
        return ErrCode_Failed;
    }
    if (!next) {
        trace.critical(514, "The next pCoefsZoneInfo is nullptr!");
        return ErrCode_Failed;
    }

    const OverlapStrip strip = overlapStrip(*current, *next, direction, edgeMargin);
    const qint64 currentPixels = checkedPixels(current->m_arrayData);
    const qint64 nextPixels = checkedPixels(next->m_arrayData);
    const bool horizontal = direction == ReviseDirection_Horizontal;
    if (!strip.fits(strip.current, currentPixels) || !strip.fits(strip.next, nextPixels)) {
        const IndexTags tags = horizontal ? IndexTags{544, 549} : IndexTags{590, 595};
        reportFirstMisfit(trace, tags, strip, currentPixels, nextPixels);
        return ErrCode_Failed;
    }
    if (!strip.isEmpty()) {
        const SingleLayerStrip values(strip, current->m_arrayData, next->m_arrayData);
        horizontal ? values.blendLines() : values.blendPositions();
    }
    trace.debug(612, "end!");
    return ErrCode_Success;
}
