#include "Receipt.h"

#include <vx/String.h>

#include <algorithm>
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

std::uint64_t Progress::takeOver(std::shared_ptr<Waker> waker, std::uint64_t connection, std::uint64_t first)
{
    std::uint64_t owner = 0;
    {
        const std::lock_guard turn(m_turn);
        const std::lock_guard lock(m_lock);
        if (m_state.hasFailed && m_state.openLines > 0)
            return 0;
        if (std::exchange(m_state.hasFailed, false))
            m_claimed = m_state.done; // the failed lines come again
        settle(first - 1);
        m_claimed = std::max(m_claimed, m_state.done);
        if (m_waker == waker && m_connection == connection)
            waker = nullptr;
        else
            m_waker.swap(waker);
        std::swap(m_connection, connection);
        m_isTold = false;
        owner = ++m_owner;
    }
    if (waker != nullptr)
        waker->wake(connection); // it may have ended already
    return owner;
}

bool Progress::isOwner(std::uint64_t owner) const
{
    const std::lock_guard lock(m_lock);
    return owner == m_owner;
}

Progress::Claim Progress::claim(std::uint64_t owner, std::uint64_t line)
{
    const std::lock_guard lock(m_lock);
    if (owner != m_owner)
        return Claim::LATE;
    if (line <= m_claimed)
        return Claim::REPEATED;
    m_claimed = line;
    return m_ahead.contains(line) ? Claim::REPEATED : Claim::NEW;
}

void Progress::begin(std::size_t bytes)
{
    const std::lock_guard lock(m_lock);
    ++m_state.openLines;
    m_state.openBytes += bytes;
}

void Progress::finish(std::uint64_t line, std::size_t count, std::size_t bytes)
{
    {
        const std::lock_guard lock(m_lock);
        const bool isAhead = line > m_state.done + 1;
        for (std::size_t index = 0; isAhead && index < count; ++index)
            m_ahead.insert(line + index); // before the rest, because it may throw
        m_state.openLines -= count;
        m_state.openBytes -= bytes;
        if (isAhead)
            return;
        settle(line + count - 1);
    }
    tell();
}

void Progress::fail(std::size_t count, std::size_t bytes)
{
    {
        const std::lock_guard lock(m_lock);
        m_state.openLines -= count;
        m_state.openBytes -= bytes;
        m_state.hasFailed = true;
    }
    tell();
}

/// Lines 1 to `line` are done, and those directly after them that are already in the log.
void Progress::settle(std::uint64_t line)
{
    m_state.done = std::max(m_state.done, line);
    while (!m_ahead.empty() && *m_ahead.begin() <= m_state.done + 1) {
        m_state.done = std::max(m_state.done, *m_ahead.begin());
        m_ahead.erase(m_ahead.begin());
    }
}

Progress::State Progress::takeNews()
{
    const std::lock_guard lock(m_lock);
    m_isTold = false;
    return m_state;
}

void Progress::tell()
{
    std::shared_ptr<Waker> waker;
    std::uint64_t connection = 0;
    {
        const std::lock_guard lock(m_lock);
        if (std::exchange(m_isTold, true))
            return;
        waker = m_waker;
        connection = m_connection;
    }
    waker->wake(connection);
}

Progress::State Progress::state() const
{
    const std::lock_guard lock(m_lock);
    return m_state;
}

} // namespace vxlogd
