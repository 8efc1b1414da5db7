#pragma once

#include "records/trace.h"
#include "seamrevision/areainfobase.h"
#include "seamrevision/nqrect.h"
#include "seamrevision/zonebaseinfo.h"

/// What loading a partition is in both engines; what differs comes as an argument.
namespace seamrevision
{

/// Gives a zone a partition's id, and its rectangle grown by a band and clipped to the screen.
void setExtendedRect(ZoneBaseInfo &zone, const AreaInfoBase &area, const NQRect &screen, int exCols,
                     int exRows);

/// The numbers with which an engine reports the steps of reading a partition.
struct ReadingTags
{
    int enter;
    int noDatabase;
    int notCorrected;
    int readFailed;
    int end;
};

/// Reads a corrected partition: readZone(database) returns the database's code.
template <typename Database, typename ReadZone>
bool readStoredZone(const Trace &trace, const ReadingTags &tags, Database *database,
                    const AreaInfoBase &area, ReadZone readZone)
{
    trace.debug(tags.enter, "enter!");
    if (!database) {
        trace.critical(tags.noDatabase, "Database management object is nullter!");
        return false;
    }
    if (area.getCorrectAreaStateType() != SubAreaState_Corrected) {
        trace.debug(tags.notCorrected, "is not correct!");
        return false;
    }
    if (readZone(*database) != 0) {
        trace.debug(tags.readFailed, "m_pScreenDBManager->readAreaCoefficients failed!");
        return false;
    }
    trace.debug(tags.end, "end!");
    return true;
}

} // namespace seamrevision
