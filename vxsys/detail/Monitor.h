#pragma once

#include "vxsys/ThreadAnnotations.h"
#include "vxsys/detail/Deadline.h"
#include "vxsys/detail/Steps.h"

#include <cerrno>
#include <pthread.h>

namespace vxsys::detail {

/// A mutex with one condition on the monotonic clock: the base of the locks of one process.
class VX_CAPABILITY("mutex") Monitor {
public:
    Monitor() noexcept = default;
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;
    ~Monitor()
    {
        if (m_ready)
            ::pthread_cond_destroy(&m_condition);
        ::pthread_mutex_destroy(&m_mutex);
    }

    int init() noexcept;

    int lock() noexcept VX_ACQUIRE() { return ::pthread_mutex_lock(&m_mutex); }
    int unlock() noexcept VX_RELEASE() { return ::pthread_mutex_unlock(&m_mutex); }

    /// May return early: the caller checks its condition again. ETIMEDOUT after the deadline.
    int wait(const Deadline& deadline) noexcept VX_REQUIRES(this)
    {
        return deadline.isNever() ? ::pthread_cond_wait(&m_condition, &m_mutex)
                                  : ::pthread_cond_timedwait(&m_condition, &m_mutex, &deadline.time());
    }
    void wakeOne() noexcept { ::pthread_cond_signal(&m_condition); }
    void wakeAll() noexcept { ::pthread_cond_broadcast(&m_condition); }

    /// Waits until `holds()` is true, which is called under the lock. ETIMEDOUT if the deadline passes before that.
    template <class Condition>
    int waitUntil(const Deadline& deadline, Condition holds) noexcept VX_REQUIRES(this) VX_NO_THREAD_SAFETY_ANALYSIS;

private:
    pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
    pthread_cond_t m_condition;
    bool m_ready = false;
};

inline int Monitor::init() noexcept
{
    pthread_condattr_t attributes;
    if (const int error = ::pthread_condattr_init(&attributes))
        return error;
    const int error = inOrder([&] { return ::pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC); },
        [&] { return ::pthread_cond_init(&m_condition, &attributes); });
    ::pthread_condattr_destroy(&attributes);
    m_ready = error == 0;
    return error;
}

template <class Condition>
int Monitor::waitUntil(const Deadline& deadline, Condition holds) noexcept
{
    int error = deadline.isAtOnce() ? ETIMEDOUT : 0;
    while (!holds()) {
        if (error != 0)
            return error;
        error = wait(deadline);
    }
    return 0;
}

/// Holds the lock of a monitor to the end of the block.
class [[nodiscard]] VX_SCOPED_CAPABILITY MonitorLock {
public:
    explicit MonitorLock(Monitor& monitor) noexcept VX_ACQUIRE(monitor)
        : m_monitor(monitor)
    {
        m_monitor.lock();
    }
    ~MonitorLock() VX_RELEASE() { m_monitor.unlock(); }
    MonitorLock(const MonitorLock&) = delete;
    MonitorLock& operator=(const MonitorLock&) = delete;

private:
    Monitor& m_monitor;
};

} // namespace vxsys::detail
