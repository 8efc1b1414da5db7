#pragma once

#include "records/areainfobase.h"
#include "records/trace.h"

#include <QMap>
#include <QString>

/// What saving is in both engines; what differs comes as an argument.
namespace seamrevision
{

/// The numbers with which an engine reports why a zone cannot be saved.
struct SavingTags
{
    int noZones;
    int nullZone;
    int noArea;
};

/// Calls save(number, zone, area) for every zone, in ascending order, that has coefficients and whose
/// partition is corrected; the first code that is not success ends it.
template <typename Zone, typename IsEmpty, typename Save>
enum_ErrCodeType forEachSavedZone(const Trace &trace, const SavingTags &tags,
                                  const QMap<int, Zone *> &zones,
                                  const QMap<QString, AreaInfoBase *> &areas, IsEmpty isEmpty,
                                  Save save)
{
    if (zones.isEmpty()) {
        trace.warning(tags.noZones, "The coefsZoneInfo map is empty!");
        return ErrCode_Failed;
    }
    for (auto entry = zones.begin(); entry != zones.end(); ++entry) {
        const Zone *const zone = entry.value();
        if (!zone) {
            trace.critical(tags.nullZone, "The pCoefsZoneInfo is nullptr!");
            return ErrCode_Failed;
        }
        if (isEmpty(*zone))
            continue;
        AreaInfoBase *area = areas.value(zone->getAreaID());
        if (!area) {
            trace.critical(tags.noArea, "The pAreaInfoBase is nullptr!");
            return ErrCode_Failed;
        }
        if (area->getCorrectAreaStateType() != SubAreaState_Corrected)
            continue;
        const enum_ErrCodeType code = save(entry.key(), *zone, *area);
        if (code != ErrCode_Success)
            return code;
    }
    return ErrCode_Success;
}

} // namespace seamrevision
