#include "vxsys/Lock.h"
#include "vxsys/detail/Waitable.h"

#include <cstdint>

namespace {

using namespace vxsys::detail;

class Event final : public Waitable<HandleOf<HandleKind::EVENT>> {
public:
    int wait(const Deadline& deadline) noexcept;
    int signal() noexcept;

private:
    bool m_isSignalled VX_GUARDED_BY(m_monitor) = false;
    std::uint64_t m_signals VX_GUARDED_BY(m_monitor) = 0;
    std::uint32_t m_released VX_GUARDED_BY(m_monitor)
        = 0; ///< waiters that were released by a signal and have not run yet
};

int Event::wait(const Deadline& deadline) noexcept
{
    const MonitorLock lock(m_monitor);
    if (m_isSignalled) {
        m_isSignalled = false;
        return 0;
    }
    // A signal is for the threads that are waiting when it is sent. A later one must not take it from a waiter that has
    // not run yet.
    const std::uint64_t before = m_signals;
    const int error
        = waitUntil(deadline, [&]() VX_REQUIRES(m_monitor) { return m_released > 0 && m_signals != before; });
    if (error == 0)
        --m_released;
    return error;
}

int Event::signal() noexcept
{
    const MonitorLock lock(m_monitor);
    ++m_signals;
    // Each signal releases another waiter, even if the next signal is sent before that waiter runs.
    if (m_released < m_waiters) {
        ++m_released;
        m_monitor.wakeOne();
    } else {
        m_isSignalled = true;
    }
    return 0;
}

} // namespace

std::int32_t VXEventCreate(const char* name, std::uint32_t, VXHandle* event) noexcept
{
    return createHandle<Event>(event, name);
}

std::int32_t VXEventWait(VXHandle event) noexcept
{
    return VXEventTimedWait(event, VX_WAIT_FOREVER);
}

std::int32_t VXEventTimedWait(VXHandle event, std::uint32_t milliseconds) noexcept
{
    return onHandle<&Event::wait>(event, Deadline::in(milliseconds));
}

std::int32_t VXEventSignal(VXHandle event) noexcept
{
    return onHandle<&Event::signal>(event);
}

std::int32_t VXEventDestroy(VXHandle event) noexcept
{
    return destroyHandle<Event>(event);
}
