#include "process/backgroundwork.h"

#include "process/parallel.h"

#include <utility>

namespace seamrevise
{

BackgroundWork::~BackgroundWork()
{
    {
        const Lock lock(m_mutex);
        m_isEnding = true;
        m_waiting.clear();
    }
    m_changed.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

void BackgroundWork::add(qint64 bytes, std::function<void()> piece)
{
    Lock lock(m_mutex);
    m_waiting.push_back({bytes, std::move(piece)});
    m_waitingBytes += bytes;
    if (m_waiting.size() > static_cast<std::size_t>(m_idleThreads))
        startThread();
    m_changed.notify_all();
    while (m_threads.empty() && !m_waiting.empty())
        doNext(lock);
}

void BackgroundWork::helpUntil(qint64 mostBytes)
{
    Lock lock(m_mutex);
    while (m_waiting.size() > 1 && m_waitingBytes > mostBytes)
        doNext(lock);
}

void BackgroundWork::finish()
{
    Lock lock(m_mutex);
    while (!m_waiting.empty())
        doNext(lock);
    m_changed.wait(lock, [this] { return m_atWork == 0; });
    if (m_thrown)
        std::rethrow_exception(std::exchange(m_thrown, nullptr));
}

/// One more, if there may be more.
void BackgroundWork::startThread()
{
    if (m_threads.size() + 1 >= static_cast<std::size_t>(mostThreads()))
        return;
    try {
        m_threads.reserve(m_threads.size() + 1);
        m_threads.emplace_back([this] { serve(); });
        ++m_idleThreads;
    } catch (const std::exception &) { // those that there are will do, and the caller's
    }
}

/// What the other threads do.
void BackgroundWork::serve()
{
    Lock lock(m_mutex);
    while (!m_isEnding) {
        if (m_waiting.empty()) {
            m_changed.wait(lock);
            continue;
        }
        --m_idleThreads;
        doNext(lock);
        ++m_idleThreads;
    }
}

/// Does the piece that has waited longest; unlocked meanwhile.
void BackgroundWork::doNext(Lock &lock)
{
    Piece piece = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_waitingBytes -= piece.bytes;
    ++m_atWork;
    lock.unlock();
    std::exception_ptr thrown;
    try {
        piece.work();
    } catch (...) {
        thrown = std::current_exception();
    }
    piece.work = nullptr; // with what it holds
    lock.lock();
    --m_atWork;
    if (thrown && !m_thrown) {
        m_thrown = thrown;
        m_waiting.clear();
        m_waitingBytes = 0;
    }
    m_changed.notify_all();
}

} // namespace seamrevise
