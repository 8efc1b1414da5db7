#pragma once

#include "records/trace.h"
#include "seamrevision/areainfobase.h"
#include "seamrevision/revisetypes.h"

#include <QMap>
#include <QString>

namespace seamrevision
{

/// The numbers with which an engine reports what it does not find.
struct SeamLookupTags
{
    struct Partition
    {
        int missingKey;
        int nullRecord;
    };
    int indexOutOfRange;
    Partition currentArea;
    Partition nextArea;
    Partition currentZone;
    Partition nextZone;
};

/// Turns the two partition numbers of a seam into their zones.
///
/// After find() either both zones are there, or neither: then code() says whether that is a
/// failure, or success because a partition is not corrected and the seam is skipped. The order
/// of the checks is fixed: a seam whose current partition is not corrected never asks for zones.
template <typename Zone>
class SeamLookup
{
public:
    SeamLookup(const Trace &trace, const SeamLookupTags &tags,
               const QMap<QString, AreaInfoBase *> &areas, const QMap<int, Zone *> &zones)
        : m_trace(trace)
        , m_tags(tags)
        , m_areas(areas)
        , m_zones(zones)
    {
    }

    bool find(int currentIndex, int nextIndex)
    {
        m_code = ErrCode_Failed;
        if (currentIndex > m_areas.size() - 1) {
            m_trace.critical(m_tags.indexOutOfRange, "The subarea index out of range!");
            return false;
        }
        const AreaInfoBase *currentArea = findArea(currentIndex, m_tags.currentArea);
        const AreaInfoBase *nextArea = currentArea ? findArea(nextIndex, m_tags.nextArea) : nullptr;
        if (!nextArea)
            return false;
        Zone *current = findZone(*currentArea, currentIndex, m_tags.currentZone);
        m_next = current ? findZone(*nextArea, nextIndex, m_tags.nextZone) : nullptr;
        m_current = m_next ? current : nullptr;
        return m_next != nullptr;
    }

    Zone *current() const { return m_current; }
    Zone *next() const { return m_next; }
    enum_ErrCodeType code() const { return m_code; }

private:
    const AreaInfoBase *findArea(int index, const SeamLookupTags::Partition &tags) const
    {
        const auto found = m_areas.constFind(QString::number(index, 10));
        if (found == m_areas.constEnd()) {
            m_trace.warning(tags.missingKey, "The subarea key out of range!");
            return nullptr;
        }
        if (!found.value())
            m_trace.critical(tags.nullRecord, "The pAreaInfoBase is nullptr!");
        return found.value();
    }

    Zone *findZone(const AreaInfoBase &area, int index, const SeamLookupTags::Partition &tags)
    {
        if (area.getCorrectAreaStateType() != SubAreaState_Corrected) {
            m_code = ErrCode_Success;
            return nullptr;
        }
        const auto found = m_zones.constFind(index);
        if (found == m_zones.constEnd()) {
            m_trace.warning(tags.missingKey, "The coefsZoneInfo key out of range!");
            return nullptr;
        }
        if (!found.value())
            m_trace.critical(tags.nullRecord, "The pCoefsZoneInfo is nullptr!");
        return found.value();
    }

    const Trace &m_trace;
    const SeamLookupTags &m_tags;
    const QMap<QString, AreaInfoBase *> &m_areas;
    const QMap<int, Zone *> &m_zones;
    Zone *m_current = nullptr;
    Zone *m_next = nullptr;
    enum_ErrCodeType m_code = ErrCode_Failed;
};

} // namespace seamrevision
