#include "Receipt.h"

#include <vx/String.h>

#include <algorithm>
#include <istream>
#include <ostream>
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
        if (m_state.hasFailed || m_state.hasLost)
            m_claimed = m_state.done; // the failed lines come again
        m_state.hasFailed = m_state.hasLost = false;
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
    return m_ahead.contains(line) || m_waiting.contains(line) ? Claim::REPEATED : Claim::NEW;
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

void Progress::fail(std::uint64_t line, std::size_t count, std::size_t bytes)
{
    {
        const std::lock_guard lock(m_lock);
        const bool isWaiting = m_waiting.contains(line);
        m_waiting.erase(m_waiting.lower_bound(line), m_waiting.lower_bound(line + count));
        (isWaiting ? m_state.waitingLines : m_state.openLines) -= count;
        (isWaiting ? m_state.waitingBytes : m_state.openBytes) -= bytes;
        m_state.hasFailed = true;
    }
    tell();
}

void Progress::await(std::uint64_t line, std::size_t count, std::size_t bytes)
{
    const std::lock_guard lock(m_lock);
    try {
        for (std::size_t index = 0; index < count; ++index)
            m_waiting.insert(m_waiting.end(), line + index);
    } catch (...) {
        m_waiting.erase(m_waiting.lower_bound(line), m_waiting.lower_bound(line + count));
        throw;
    }
    m_state.openLines -= count;
    m_state.openBytes -= bytes;
    m_state.waitingLines += count;
    m_state.waitingBytes += bytes;
}

bool Progress::isWaiting(std::uint64_t line) const
{
    const std::lock_guard lock(m_lock);
    return m_waiting.contains(line);
}

void Progress::deliver(std::uint64_t line, std::size_t bytes)
{
    {
        const std::lock_guard lock(m_lock);
        if (!m_waiting.contains(line))
            return;
        const bool isAhead = line > m_state.done + 1;
        if (isAhead)
            m_ahead.insert(line); // before the rest, because it may throw
        endWaiting(line, bytes);
        if (isAhead)
            return;
        settle(line);
    }
    tell();
}

void Progress::lose(std::uint64_t line, std::size_t bytes)
{
    {
        const std::lock_guard lock(m_lock);
        if (!endWaiting(line, bytes))
            return;
        m_state.hasLost = true;
    }
    tell();
}

bool Progress::endWaiting(std::uint64_t line, std::size_t bytes)
{
    if (m_waiting.erase(line) == 0)
        return false;
    --m_state.waitingLines;
    m_state.waitingBytes -= bytes;
    return true;
}

void Progress::save(std::ostream& words) const
{
    const std::lock_guard lock(m_lock);
    words << m_state.done;
    for (const std::uint64_t line : m_ahead)
        words << ' ' << line;
}

bool Progress::restore(std::istream& words)
{
    const std::lock_guard lock(m_lock);
    if (!(words >> m_state.done))
        return false;
    for (std::uint64_t line = 0; words >> line;)
        m_ahead.insert(line);
    return words.eof();
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
    if (waker != nullptr)
        waker->wake(connection);
}

Progress::State Progress::state() const
{
    const std::lock_guard lock(m_lock);
    return m_state;
}

} // namespace vxlogd
