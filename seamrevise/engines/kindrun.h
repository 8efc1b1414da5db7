#pragma once

#include "engines/enginerun.h"
#include "engines/watchedengines.h"
#include "engines/watchedstore.h"
#include "engines/zonerecorder.h"
#include "store/storedhashes.h"

#include <seamrevision/funcrunningstate.h>

#include <QElapsedTimer>

#include <deque>
#include <exception>
#include <map>
#include <optional>
#include <type_traits>
#include <utility>

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
        if (request.hashing)
            m_storedHashes.emplace(*request.hashing,
                                   pixelsOf(request.layout.screen) * bytesPerPixel(values));
    }

    /// The records of the partitions must live as long as the engine.
    template <typename Engine>
    ST_ReviseResult run(Engine &engine, const QMap<QString, AreaInfoBase *> &areas)
    {
        const auto onRead = [this](int number, const Zone &zone) {
            timed(m_times.measuring, [&] {
                if (m_storedHashes)
                    m_storedHashes->add(number, Values::stored(zone));
                m_recorder.zoneRead(number, zone);
            });
        };
        WatchedStore store(m_request.store, onlyFor<CoefsZoneInfo>(onRead),
                           onlyFor<MultiLayerCoefZoneInfo>(onRead));
        m_store = &store;
        const Attached<Engine> attached(engine, store, *this);
        m_sinceStart.start();
        const auto screenType
            = m_request.toFiles ? ScreenType_PartitionFile : static_cast<enum_ScreenType>(0);
        ST_ReviseResult result
            = engine.boundaryModifying(m_request.dir, screenType, areas, m_request.layout.grid,
                                       m_request.layout.screen, m_request.band, m_request.margin);
        if (const std::exception_ptr thrown = m_thrown ? m_thrown : store.thrown())
            std::rethrow_exception(thrown);
        m_times.saving = seconds() - m_savingSince - m_times.checking;
        return result;
    }

    const WallMeasurements &measured() const { return m_recorder.measured(); }
    const EngineTimes &times() const { return m_times; }
    std::map<int, QByteArray> storedHashes() { return m_storedHashes->finish(); }

private:
    /// While it lives, a run sees what an engine does.
    template <typename Engine>
    class Attached
    {
    public:
        Attached(Engine &engine, WatchedStore &store, KindRun &run)
            : m_engine(engine)
        {
            FuncRunningState::setObserver([&run](const char *event, const QString &function) {
                run.keepThrown([&] { run.noteStep(event[0] == 'e', function); });
            });
            engine.setPScreenDb(&store);
            engine.setWatch(&run);
        }
        ~Attached()
        {
            FuncRunningState::setObserver(nullptr);
            m_engine.setWatch(nullptr);
            m_engine.setPScreenDb(nullptr);
        }
        Attached(const Attached &) = delete;
        Attached &operator=(const Attached &) = delete;

    private:
        Engine &m_engine;
    };

    static qint64 bytesPerPixel(const Values &values)
    {
        return static_cast<qint64>(values.perPixel()) * qint64{sizeof(typename Values::Value)};
    }

    bool zonesRevised(const QMap<int, Zone *> &zones) override
    {
        bool goesOn = false;
        keepThrown([&] {
            m_revised.emplace(m_request.layout, m_request.corrected, m_values, zones);
            goesOn = measure(zones);
            if (goesOn && m_request.toFiles)
                expectFiles();
        });
        return goesOn;
    }
    void savingEnded(bool isSaved) override
    {
        keepThrown([&] {
            while (isSaved && !m_notWritten.empty())
                noteFilesWritten();
        });
        timed(m_times.checking, [&] { keepThrown(m_request.onSavingEnded); });
    }

    /// Uncorrected partitions have their files before seams are revised; the others get them in
    /// ascending order.
    void expectFiles()
    {
        for (const auto &entry : m_request.layout.partitions) {
            if (m_request.corrected.count(entry.first) != 0)
                m_notWritten.push_back(entry.first);
            else
                m_request.onFilesWritten(entry.first, *m_revised);
        }
    }
    void noteFilesWritten()
    {
        const int number = m_notWritten.front();
        m_notWritten.pop_front();
        m_request.onFilesWritten(number, *m_revised);
    }

    void noteStep(bool begins, const QString &function)
    {
        static const std::pair<QLatin1String, EngineStep> steps[]
            = {{QLatin1String("::readCofficients"), EngineStep::Load},
               {QLatin1String("::partitionCoefRevise"), EngineStep::Revise},
               {QLatin1String("::saveCombineAreaCoef"), EngineStep::Save}};
        for (const auto &[name, step] : steps) {
            if (!function.endsWith(name))
                continue;
            if (begins)
                m_request.onStep(step);
            else if (step == EngineStep::Save && !m_notWritten.empty())
                noteFilesWritten();
        }
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

    bool measure(const QMap<int, Zone *> &zones)
    {
        timed(m_times.measuring, [&] { m_recorder.zonesRevised(zones); });
        m_times.reading = m_store->readSeconds();
        m_times.revising = seconds() - m_times.reading - m_times.measuring;
        const bool goesOn = m_request.onRevised(*m_revised);
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
    std::optional<StoredHashes> m_storedHashes;
    std::optional<ZoneComparison<Values>> m_revised; ///< of zones that live until saving ends
    std::deque<int> m_notWritten;                    ///< partitions whose files will be
    EngineTimes m_times;
    QElapsedTimer m_sinceStart;
    const WatchedStore *m_store = nullptr; ///< while the engine runs
    double m_savingSince = 0.0;
    std::exception_ptr m_thrown; ///< while zones were measured or checked
};

} // namespace seamrevise
