#pragma once

#include "engines/enginerun.h"
#include "engines/watchedengines.h"
#include "engines/watchedstore.h"
#include "engines/zonerecorder.h"
#include "exchange/storedhash.h"
#include "process/parallel.h"

#include <QElapsedTimer>

#include <exception>
#include <map>
#include <type_traits>
#include <vector>

namespace seamrevise
{

/// Runs an engine and measures the zones that pass through it. What is thrown meanwhile, no memory
/// above all, comes out of run(), though engines keep exceptions inside.
template <typename Values>
class KindRun : private ZoneWatch<typename Values::Zone>
{
public:
    using Zone = typename Values::Zone;

    KindRun(const EngineRequest &request, const Values &values)
        : m_request(request)
        , m_values(values)
        , m_recorder({request.layout, request.band, request.corrected, request.weights,
                      request.deliveredCap},
                     values)
    {
    }

    /// The records of the partitions must live as long as the engine.
    template <typename Engine>
    ST_ReviseResult run(Engine &engine, const QMap<QString, AreaInfoBase *> &areas)
    {
        const auto onRead = [this](int number, const Zone &zone) {
            timed(m_times.measuring, [&] {
                forEachInParallel(m_request.hashesStored ? 2 : 1, [&](int work) {
                    if (work == 0)
                        m_recorder.zoneRead(number, zone);
                    else
                        m_storedSha256[number] = storedSha256(Values::stored(zone));
                });
            });
        };
        WatchedStore store(m_request.store, onlyFor<CoefsZoneInfo>(onRead),
                           onlyFor<MultiLayerCoefZoneInfo>(onRead));
        m_store = &store;
        engine.setPScreenDb(&store);
        engine.setWatch(this);
        m_sinceStart.start();
        const auto screenType
            = m_request.toFiles ? ScreenType_PartitionFile : static_cast<enum_ScreenType>(0);
        ST_ReviseResult result
            = engine.boundaryModifying(m_request.dir, screenType, areas, m_request.layout.grid,
                                       m_request.layout.screen, m_request.band, m_request.margin);
        engine.setWatch(nullptr);
        engine.setPScreenDb(nullptr);
        if (const std::exception_ptr thrown = m_thrown ? m_thrown : store.thrown())
            std::rethrow_exception(thrown);
        m_times.saving = seconds() - m_savingSince - m_times.checking;
        return result;
    }

    const WallMeasurements &measured() const { return m_recorder.measured(); }
    const EngineTimes &times() const { return m_times; }
    const std::map<int, QByteArray> &storedHashes() const { return m_storedSha256; }

private:
    bool zonesRevised(const QMap<int, Zone *> &zones) override
    {
        bool goesOn = false;
        keepThrown([&] { goesOn = measure(zones); });
        return goesOn;
    }
    void zonesSaved(const QMap<int, Zone *> &zones) override
    {
        keepThrown([&] { timed(m_times.checking, [&] { m_request.onSaved(revised(zones)); }); });
    }

    /// What is thrown waits until the engine has come to its end.
    template <typename Work>
    void keepThrown(Work work)
    {
        try {
            work();
        } catch (...) {
            m_thrown = std::current_exception();
        }
    }

    ZoneComparison<Values> revised(const QMap<int, Zone *> &zones) const
    {
        return {m_request.layout, m_request.corrected, m_values, zones};
    }

    bool measure(const QMap<int, Zone *> &zones)
    {
        timed(m_times.measuring, [&] { m_recorder.zonesRevised(zones); });
        m_times.reading = m_store->readSeconds();
        m_times.revising = seconds() - m_times.reading - m_times.measuring;
        const bool goesOn = m_request.onRevised(revised(zones));
        m_savingSince = seconds();
        return goesOn;
    }

    double seconds() const { return static_cast<double>(m_sinceStart.nsecsElapsed()) * 1e-9; }

    template <typename Work>
    void timed(double &sum, Work work)
    {
        const double start = seconds();
        work();
        sum += seconds() - start;
    }

    template <typename AnyZone, typename OnRead>
    static WatchedStore::OnRead<AnyZone> onlyFor(const OnRead &onRead)
    {
        if constexpr (std::is_same_v<AnyZone, Zone>)
            return onRead;
        else
            return nullptr;
    }

    const EngineRequest m_request;
    const Values m_values;
    ZoneRecorder<Values> m_recorder;
    std::map<int, QByteArray> m_storedSha256;
    EngineTimes m_times;
    QElapsedTimer m_sinceStart;
    const WatchedStore *m_store = nullptr; ///< while the engine runs
    double m_savingSince = 0.0;
    std::exception_ptr m_thrown; ///< while zones were measured or checked
};

} // namespace seamrevise
