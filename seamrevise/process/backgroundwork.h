#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace seamrevise
{

/// Independent pieces of work that are done beside the caller's, on as many threads as setJobs()
/// allows, the caller's included. One thread gives pieces and waits for them.
class BackgroundWork
{
public:
    BackgroundWork() = default;
    /// Ends what has begun and drops what waits.
    ~BackgroundWork();
    BackgroundWork(const BackgroundWork &) = delete;
    BackgroundWork &operator=(const BackgroundWork &) = delete;

    /// Takes a piece that holds so many bytes until it is done. The oldest are done first; where
    /// no other thread is to be had, the caller's does it now.
    void add(qint64 bytes, std::function<void()> piece);

    /// Does pieces, together with the other threads, until all but one that wait hold no more.
    void helpUntil(qint64 mostBytes);

    /// Does what waits, together with the other threads, and returns when all is done. The first
    /// exception that a piece let out comes out here; what waited then is dropped.
    void finish();

private:
    struct Piece
    {
        qint64 bytes = 0;
        std::function<void()> work;
    };
    using Lock = std::unique_lock<std::mutex>;

    void startThread();
    void serve();
    void doNext(Lock &lock);

    std::vector<std::thread> m_threads; ///< as many as pieces needed at once
    std::mutex m_mutex;                 ///< of all that follows
    std::condition_variable m_changed;
    std::deque<Piece> m_waiting;
    qint64 m_waitingBytes = 0;
    int m_atWork = 0;
    int m_idleThreads = 0;
    bool m_isEnding = false;
    std::exception_ptr m_thrown;
};

} // namespace seamrevise
