#pragma once

#include "records/trace.h"
#include "seamrevision/areainfobase.h"

#include <QMap>
#include <QString>

#include <memory>
#include <new>

/// What saving is in both engines; what differs comes as an argument.
namespace seamrevision
{

/// The numbers with which an engine reports why a zone cannot be saved.
struct SavingTags
{
    int noZones;
    int nullZone;
    int noArea;
    int noMemory;
};

/// Saves every zone, in ascending order, that has coefficients and whose partition is corrected;
/// the first code that is not success ends it. An engine's saving says whether a zone has
/// coefficients (hasCoefs), gives a new zone a partition's own rectangle (setOwnRect) and saves
/// the part of a zone that lies in it (save), for which it may use the zone up.
template <typename Zone, typename Saving>
enum_ErrCodeType saveEachZone(const Trace &trace, const SavingTags &tags,
                              const QMap<int, Zone *> &zones,
                              const QMap<QString, AreaInfoBase *> &areas, Saving &saving)
{
    if (zones.isEmpty()) {
        trace.warning(tags.noZones, "The coefsZoneInfo map is empty!");
        return ErrCode_Failed;
    }
    for (auto entry = zones.begin(); entry != zones.end(); ++entry) {
        Zone *const zone = entry.value();
        if (!zone) {
            trace.critical(tags.nullZone, "The pCoefsZoneInfo is nullptr!");
            return ErrCode_Failed;
        }
        if (!saving.hasCoefs(*zone))
            continue;
        AreaInfoBase *area = areas.value(zone->getAreaID());
        if (!area) {
            trace.critical(tags.noArea, "The pAreaInfoBase is nullptr!");
            return ErrCode_Failed;
        }
        if (area->getCorrectAreaStateType() != SubAreaState_Corrected)
            continue;
        const std::unique_ptr<Zone> areaZone(new (std::nothrow) Zone());
        if (!areaZone) {
            trace.critical(tags.noMemory, "The pCoefsZoneInfo is nullptr!");
            return ErrCode_Failed;
        }
        saving.setOwnRect(*areaZone, *area);
        const enum_ErrCodeType code = saving.save(entry.key(), *zone, *areaZone);
        if (code != ErrCode_Success)
            return code;
    }
    return ErrCode_Success;
}

} // namespace seamrevision
