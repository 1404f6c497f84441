#include "Receipt.h"

#include <vx/String.h>

#include <stdexcept>
#include <utility>

namespace vxlogd {

Waker::Waker()
    : m_poller(&m_status)
{
    if (m_status != VX_E_SOCKET_OK)
        throw std::runtime_error(
            "waiting for sockets: " + vx::String(VXGetDescriptionFromVX_E_SOCKET(m_status)).toUtf8());
}

void Waker::wake(std::uint64_t connection)
{
    std::unique_lock lock(m_lock);
    m_news.connections.push_back(connection);
    wake(std::move(lock));
}

void Waker::wakeForAll()
{
    std::unique_lock lock(m_lock);
    m_news.isForAll = true;
    wake(std::move(lock));
}

void Waker::wake(std::unique_lock<std::mutex> lock)
{
    const bool isAwake = std::exchange(m_isAwake, true);
    lock.unlock();
    if (!isAwake)
        m_poller.wake();
}

Waker::News Waker::take()
{
    const std::lock_guard lock(m_lock);
    m_isAwake = false;
    return std::exchange(m_news, {});
}

Progress::Progress(std::shared_ptr<Waker> waker, std::uint64_t connection)
    : m_waker(std::move(waker))
    , m_connection(connection)
{
}

void Progress::begin(std::size_t bytes)
{
    const std::lock_guard lock(m_lock);
    ++m_state.openLines;
    m_state.openBytes += bytes;
}

void Progress::finish(std::uint64_t line, std::size_t bytes)
{
    {
        const std::lock_guard lock(m_lock);
        if (line != m_state.done + 1)
            m_ahead.insert(line); // before the rest, because it may throw
        --m_state.openLines;
        m_state.openBytes -= bytes;
        if (line != m_state.done + 1)
            return;
        m_state.done = line;
        while (!m_ahead.empty() && *m_ahead.begin() == m_state.done + 1) {
            ++m_state.done;
            m_ahead.erase(m_ahead.begin());
        }
    }
    tell();
}

void Progress::fail(std::size_t bytes)
{
    {
        const std::lock_guard lock(m_lock);
        --m_state.openLines;
        m_state.openBytes -= bytes;
        m_state.hasFailed = true;
    }
    tell();
}

Progress::State Progress::takeNews()
{
    m_isTold = false;
    return state();
}

void Progress::tell()
{
    if (!m_isTold.exchange(true))
        m_waker->wake(m_connection);
}

Progress::State Progress::state() const
{
    const std::lock_guard lock(m_lock);
    return m_state;
}

} // namespace vxlogd
