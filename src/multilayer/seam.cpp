#include "seamrevision/multilayerpartitionmerge.h"

#include "multilayer/coefs.h"
#include "records/trace.h"
#include "revision/blend.h"
#include "revision/overlapstrip.h"
#include "revision/seamlookup.h"

#include <algorithm>

using namespace seamrevision;

namespace
{

/// A strip together with the tables that it lies in.
class MultiLayerStrip
{
public:
    MultiLayerStrip(const OverlapStrip &strip, CoefTable &current, CoefTable &next)
        : m_strip(strip)
        , m_current(current)
        , m_next(next)
    {
    }

    /// Whether every pixel of the strip has a row in both tables.
    bool fits() const
    {
        return m_strip.fits(m_strip.current, static_cast<qint64>(m_current.size()))
            && m_strip.fits(m_strip.next, static_cast<qint64>(m_next.size()));
    }

    /// Line by line, the agreed order; false at the first pixel that fails the index check.
    bool blendLines() const
    {
        for (qint64 line = 0; line < m_strip.lineCount; ++line) {
            for (qint64 pos = m_strip.firstPosition; pos <= m_strip.lastPosition; ++pos) {
                if (!blendPixel(line, pos))
                    return false;
            }
        }
        return true;
    }

    /// Position by position: the same where every pixel fits and none repeats, and in the order
    /// of the memory for a vertical strip.
    bool blendPositions() const
    {
        for (qint64 pos = m_strip.firstPosition; pos <= m_strip.lastPosition; ++pos) {
            for (qint64 line = 0; line < m_strip.lineCount; ++line) {
                if (!blendPixel(line, pos))
                    return false;
            }
        }
        return true;
    }

private:
    /// The index check lets one index beyond the end pass; there is nothing to blend then.
    static bool passesCheck(qint64 pixel, const CoefTable &table)
    {
        return static_cast<quint64>(pixel) <= table.size();
    }

    bool blendPixel(qint64 line, qint64 position) const
    {
        const qint64 currentPixel = m_strip.current.pixel(line, position);
        const qint64 nextPixel = m_strip.next.pixel(line, position);
        if (!passesCheck(currentPixel, m_current) || !passesCheck(nextPixel, m_next))
            return false;
        const auto currentIndex = static_cast<std::size_t>(currentPixel);
        const auto nextIndex = static_cast<std::size_t>(nextPixel);
        if (currentIndex < m_current.size() && nextIndex < m_next.size()) {
            std::vector<int> &current = m_current[currentIndex];
            std::vector<int> &next = m_next[nextIndex];
            blendLevel(current.data(), next.data(), std::min(current.size(), next.size()),
                       static_cast<qint32>(position), m_strip.width);
        }
        return true;
    }

    const OverlapStrip &m_strip;
    CoefTable &m_current;
    CoefTable &m_next;
};

} // namespace

enum_ErrCodeType MultiLayerPartitionMerge::startRevise(enum_ReviseDirection direction,
                                                       int currentIndex, int nextIndex,
                                                       QMap<QString, AreaInfoBase *> areas,
                                                       QMap<int, MultiLayerCoefZoneInfo *> coefs)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::startRevise"));
    const SeamLookupTags tags{719, {724, 731}, {736, 743}, {751, 757}, {766, 772}};
    SeamLookup<MultiLayerCoefZoneInfo> seam(trace, tags, areas, coefs);
    if (!seam.find(currentIndex, nextIndex))
        return seam.code();
    return partitionCoefRevise(seam.current(), seam.next(), seamDirection(direction), m_edgeMargin);
}

enum_ErrCodeType MultiLayerPartitionMerge::partitionCoefRevise(MultiLayerCoefZoneInfo *current,
                                                               MultiLayerCoefZoneInfo *next,
                                                               enum_ReviseDirection direction,
                                                               int edgeMargin)
{
    const Trace trace(QStringLiteral("MultiLayerPartitionMerge::partitionCoefRevise"));
    trace.debug(624, "start!");
    if (!current || !next) {
        trace.critical(628, "The currentArea or nextArea is nullptr!");
        return ErrCode_Failed;
    }

    const OverlapStrip strip = overlapStrip(*current, *next, direction, edgeMargin);
    const MultiLayerStrip rows(strip, current->m_multiLayerCoefs, next->m_multiLayerCoefs);
    const bool horizontal = direction == ReviseDirection_Horizontal;
    const auto blend
        = [&] { return horizontal || !rows.fits() ? rows.blendLines() : rows.blendPositions(); };
    if (!strip.isEmpty() && !blend()) {
        trace.critical(horizontal ? 655 : 690, "The index of cofficient is out of range!");
        return ErrCode_Failed;
    }
    trace.debug(706, "end!");
    return ErrCode_Success;
}
