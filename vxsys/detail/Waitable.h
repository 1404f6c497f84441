#pragma once

#include "vxsys/detail/Handle.h"
#include "vxsys/detail/Monitor.h"

#include <cstdint>

namespace vxsys::detail {

/// Counts the threads that wait on a monitor. It cannot be destroyed while there are any.
template <class Handle>
class Waitable : public Handle {
public:
    using Handle::Handle;

    int init() noexcept { return m_monitor.init(); }
    int destroyable() noexcept
    {
        const MonitorLock lock(m_monitor);
        return m_waiters == 0 ? 0 : EBUSY;
    }

protected:
    /// Waits until `holds()` is true, which is called under the lock. ETIMEDOUT if the deadline passes before that.
    template <class Condition>
    int waitUntil(const Deadline& deadline, Condition holds) noexcept VX_REQUIRES(m_monitor)
    {
        ++m_waiters;
        const int error = m_monitor.waitUntil(deadline, holds);
        --m_waiters;
        return error;
    }

    Monitor m_monitor;
    std::uint32_t m_waiters VX_GUARDED_BY(m_monitor) = 0;
};

} // namespace vxsys::detail
