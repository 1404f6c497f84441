#include "Receipt.h"

#include <cerrno>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vxlogd {

Waker::Waker()
{
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0)
        throw std::system_error(errno, std::generic_category(), "a pair of sockets");
    m_writeEnd = ends[0];
    m_readEnd = ends[1];
}

Waker::~Waker()
{
    ::close(m_writeEnd);
    if (m_readEnd != -1)
        ::close(m_readEnd);
}

void Waker::wake()
{
    const std::lock_guard lock(m_lock);
    if (!std::exchange(m_isAwake, true))
        ::send(m_writeEnd, "w", 1, MSG_NOSIGNAL);
}

void Waker::hear()
{
    const std::lock_guard lock(m_lock);
    m_isAwake = false;
}

unsigned int Waker::takeSocket()
{
    return static_cast<unsigned int>(std::exchange(m_readEnd, -1));
}

Progress::Progress(std::shared_ptr<Waker> waker)
    : m_waker(std::move(waker))
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
    m_waker->wake();
}

void Progress::fail(std::size_t bytes)
{
    {
        const std::lock_guard lock(m_lock);
        --m_state.openLines;
        m_state.openBytes -= bytes;
        m_state.hasFailed = true;
    }
    m_waker->wake();
}

Progress::State Progress::state() const
{
    const std::lock_guard lock(m_lock);
    return m_state;
}

} // namespace vxlogd
