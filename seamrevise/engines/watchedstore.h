#pragma once

#include <seamrevision/screendatabasemanager.h>

#include <QElapsedTimer>

#include <exception>
#include <functional>

namespace seamrevise
{

/// A screen database that hands on what another one answers, shows each zone as it passes, and
/// takes the time of reading.
class WatchedStore : public ScreenDataBaseManager
{
public:
    template <typename Zone>
    using OnRead = std::function<void(int number, const Zone &zone)>;

    /// The store must live as long; what is not watched is null.
    WatchedStore(ScreenDataBaseManager &store, OnRead<CoefsZoneInfo> onSingle,
                 OnRead<MultiLayerCoefZoneInfo> onLayered)
        : m_store(store)
        , m_onSingle(std::move(onSingle))
        , m_onLayered(std::move(onLayered))
    {
    }

    double readSeconds() const { return static_cast<double>(m_readNanoseconds) * 1e-9; }

    /// What was thrown while a zone was read, which an engine turns into a mere failure.
    const std::exception_ptr &thrown() const { return m_thrown; }

    int ReadAllIDAreaCoefIDs(QMap<int, CoefsZoneInfo *> &zones) override
    {
        return m_store.ReadAllIDAreaCoefIDs(zones);
    }
    int readAreaCoefficients(int number, CoefsZoneInfo &zone) override
    {
        return watched(m_onSingle, number, zone,
                       [&] { return m_store.readAreaCoefficients(number, zone); });
    }
    int ReadMultiLayerAllCorrectedAreaIDs(std::vector<int> &numbers) override
    {
        return m_store.ReadMultiLayerAllCorrectedAreaIDs(numbers);
    }
    int readMultiLayerAreaCoefficients(const unsigned int &layerSize, const unsigned int &number,
                                       MultiLayerCoefZoneInfo &zone) override
    {
        return watched(m_onLayered, static_cast<int>(number), zone, [&] {
            return m_store.readMultiLayerAreaCoefficients(layerSize, number, zone);
        });
    }

private:
    template <typename Zone, typename Read>
    int watched(const OnRead<Zone> &onRead, int number, const Zone &zone, Read read)
    {
        try {
            QElapsedTimer timer;
            timer.start();
            const int code = read();
            m_readNanoseconds += timer.nsecsElapsed();
            if (code == 0 && onRead)
                onRead(number, zone);
            return code;
        } catch (...) {
            m_thrown = std::current_exception();
            throw;
        }
    }

    ScreenDataBaseManager &m_store;
    const OnRead<CoefsZoneInfo> m_onSingle;
    const OnRead<MultiLayerCoefZoneInfo> m_onLayered;
    qint64 m_readNanoseconds = 0;
    std::exception_ptr m_thrown;
};

} // namespace seamrevise
