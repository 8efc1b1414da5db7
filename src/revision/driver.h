#pragma once

#include "records/trace.h"
#include "revision/exacttype.h"
#include "revision/gridwalk.h"
#include "revision/ownedzones.h"
#include "revision/result.h"
#include "revision/stepoutcome.h"
#include "seamrevision/areainfobase.h"
#include "seamrevision/reviseresult.h"

#include <QMap>
#include <QSet>
#include <QString>

#include <memory>
#include <utility>

/// What a revision is in both engines; what differs is virtual or comes as an argument.
namespace seamrevision
{

/// The arguments of a revision that its steps need.
struct RevisionRequest
{
    QString coefPath;
    enum_ScreenType screenType;
    QMap<QString, AreaInfoBase *> areas;
    baseCommon::NQSize partitionGrid;
    NQRect screenRect;
    baseCommon::NQSize zoneSize;
};

/// One revision: its arguments, its working data and the order of its steps.
template <typename Zone>
class RevisionSteps
{
public:
    RevisionSteps(const Trace &trace, const RevisionRequest &request, ST_ReviseResult &result)
        : m_trace(trace)
        , m_request(request)
        , m_result(result)
    {
    }
    virtual ~RevisionSteps() = default;
    RevisionSteps(const RevisionSteps &) = delete;
    RevisionSteps &operator=(const RevisionSteps &) = delete;

    /// All steps in their order; the first that fails is the outcome.
    StepOutcome run()
    {
        using Step = StepOutcome (RevisionSteps::*)();
        const Step steps[] = {&RevisionSteps::listCorrected,    &RevisionSteps::prepareZones,
                              &RevisionSteps::resetUncorrected, &RevisionSteps::loadCorrected,
                              &RevisionSteps::reviseSeams,      &RevisionSteps::saveZones};
        for (const Step step : steps) {
            StepOutcome outcome = (this->*step)();
            if (outcome.failed())
                return outcome;
        }
        return {};
    }

protected:
    /// Asks the database for the numbers of the corrected partitions.
    virtual StepOutcome listCorrected() = 0;
    /// Sets every partition's state and gives it an empty zone.
    virtual StepOutcome prepareZones() = 0;
    /// Gives uncorrected partitions identity coefficients.
    virtual StepOutcome resetUncorrected() = 0;
    /// Reads corrected partitions into their zones.
    virtual StepOutcome loadCorrected() = 0;
    /// Blends all seams.
    virtual StepOutcome reviseSeams() = 0;
    /// Cuts the partitions back out of their zones.
    virtual StepOutcome saveZones() = 0;

    const Trace &m_trace;
    const RevisionRequest &m_request;
    ST_ReviseResult &m_result;
    QSet<int> m_correctedNumbers;
    OwnedZones<Zone> m_zones;
};

/// The numbers with which an engine reports how a revision ends.
struct EndTags
{
    int end;
    int exception;
};

/// Runs a revision (RevisionSteps of an engine) and sends what it came to, once, through
/// send(code, text, result); whatever is thrown on the way is a failure. If the sending throws,
/// there is nobody left to ask: the failure is returned as it is. Where nobody can have replaced
/// the sending, its result is not copied but moved.
template <typename Revision, typename Engine, typename Send>
ST_ReviseResult runRevision(Engine &engine, const Trace &trace, const EndTags &tags,
                            const RevisionRequest &request, Send send)
{
    ST_ReviseResult result;
    result.rect = request.screenRect;
    StepOutcome outcome;
    try {
        // The zones go with the revision, before the result is sent: they need not exist at once.
        outcome = Revision(engine, trace, request, result).run();
        if (!outcome.failed())
            trace.debug(tags.end, "end!");
    } catch (...) {
        outcome = {ErrCode_Failed, QString()};
        trace.critical(tags.exception, "Unexpected exception!");
    }
    if (isExactly(engine)) {
        endResult(outcome.code, outcome.text, result);
        return result;
    }
    try {
        return send(outcome.code, outcome.text, result);
    } catch (...) {
        trace.critical(tags.exception, "Unexpected exception!");
    }
    ST_ReviseResult failure;
    failure.rect = request.screenRect;
    failure.errCode = ErrCode_Failed;
    return failure;
}

/// The numbers with which an engine reports what keeps a partition from being prepared.
struct PreparationTags
{
    int checking;
    int nullRecord;
    int noZone;
};

/// Sets every partition's correction state and gives it an empty zone, in the order of the keys.
/// makeZone(area) returns a new zone, which goes to the caller, or null.
template <typename Zone, typename MakeZone>
StepOutcome prepareEachPartition(const Trace &trace, const PreparationTags &tags,
                                 const QMap<QString, AreaInfoBase *> &areas,
                                 const QSet<int> &correctedNumbers, OwnedZones<Zone> &zones,
                                 MakeZone makeZone)
{
    trace.debug(tags.checking, "Check whether the partition has been corrected");
    for (auto entry = areas.begin(); entry != areas.end(); ++entry) {
        AreaInfoBase *const area = entry.value();
        if (!area) {
            trace.critical(tags.nullRecord, "The pSubAreaInfo is nullptr!");
            return {ErrCode_Failed, entry.key()};
        }
        const int number = entry.key().toInt();
        area->setCorrectAreaStateType(
            correctedNumbers.contains(number) ? SubAreaState_Corrected : SubAreaState_NotCorrected);
        std::unique_ptr<Zone> zone(makeZone(*area));
        if (!zone) {
            trace.critical(tags.noZone, "The pCoefsZoneInfo is nullptr!");
            return {ErrCode_Failed, entry.key()};
        }
        zones.insert(number, std::move(zone));
    }
    return {};
}

/// The numbers with which an engine reports what a grid lacks.
struct GridTags
{
    int emptyKey;
    int missingRecord;
};

/// Calls reset(key, area) for every uncorrected partition of the grid, row by row.
template <typename Reset>
StepOutcome forEachUncorrected(const Trace &trace, const GridTags &tags,
                               const RevisionRequest &request, Reset reset)
{
    return forEachNumber(request.partitionGrid, [&](qint64 number) -> StepOutcome {
        const QString key = QString::number(number);
        if (key.isEmpty()) {
            trace.critical(tags.emptyKey, "The number of partition is empty!");
            return {ErrCode_Failed, key};
        }
        AreaInfoBase *const area = request.areas.value(key);
        if (!area) {
            trace.critical(tags.missingRecord, "The pSubAreaInfo is nullptr!");
            return {ErrCode_Failed, key};
        }
        if (area->getCorrectAreaStateType() == SubAreaState_Corrected)
            return {};
        return reset(key, *area);
    });
}

/// Calls load(key, area) for every corrected partition, in the order of the keys.
template <typename Load>
StepOutcome forEachCorrected(const RevisionRequest &request, Load load)
{
    for (auto entry = request.areas.begin(); entry != request.areas.end(); ++entry) {
        if (entry.value()->getCorrectAreaStateType() != SubAreaState_Corrected)
            continue;
        StepOutcome outcome = load(entry.key(), *entry.value());
        if (outcome.failed())
            return outcome;
    }
    return {};
}

/// Revises all seams of the grid in their order; revise(seam) returns the code of one.
template <typename Revise>
StepOutcome reviseEachSeam(const RevisionRequest &request, Revise revise)
{
    StepOutcome result = forEachSeam(request.partitionGrid, [&](const Seam &seam) -> StepOutcome {
        const enum_ErrCodeType code = revise(seam);
        if (code == ErrCode_Success)
            return {};
        logPlain("Revise failed!");
        return {code, QString::number(seam.current)};
    });
    if (!result.failed())
        logPlain("Partition fusion completed! ");
    return result;
}

/// The outcome of saving, from its code.
inline StepOutcome savingOutcome(enum_ErrCodeType code)
{
    if (code != ErrCode_Success)
        logPlain("Save revised coefficient failed!");
    return {code, QString()};
}

} // namespace seamrevision
