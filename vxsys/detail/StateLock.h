#pragma once

#include "vxsys/ThreadAnnotations.h"
#include "vxsys/detail/ForkHandlers.h"

#include <atomic>
#include <mutex>

namespace vxsys::detail {

/// A mutex for state of the process, for the thread-safety analysis. It works before any constructor has run and after
/// all destructors.
class VX_CAPABILITY("mutex") StateLock {
public:
    constexpr StateLock() noexcept = default;
    StateLock(const StateLock&) = delete;
    StateLock& operator=(const StateLock&) = delete;

    void lock() noexcept VX_ACQUIRE() VX_NO_THREAD_SAFETY_ANALYSIS { m_mutex.lock(); }
    bool tryLock() noexcept VX_TRY_ACQUIRE(true) VX_NO_THREAD_SAFETY_ANALYSIS { return m_mutex.try_lock(); }
    void unlock() noexcept VX_RELEASE() VX_NO_THREAD_SAFETY_ANALYSIS { m_mutex.unlock(); }
    /// For a wait on a condition variable of the system.
    std::mutex::native_handle_type native() noexcept { return m_mutex.native_handle(); }

private:
    std::mutex m_mutex;
};

/// Holds the lock to the end of the block.
class [[nodiscard]] VX_SCOPED_CAPABILITY StateGuard {
public:
    explicit StateGuard(StateLock& lock) noexcept VX_ACQUIRE(lock)
        : m_lock(lock)
    {
        m_lock.lock();
    }
    /// For a lock that the caller already holds.
    StateGuard(StateLock& lock, std::adopt_lock_t) noexcept VX_REQUIRES(lock)
        : m_lock(lock)
    {
    }
    ~StateGuard() VX_RELEASE() { m_lock.unlock(); }
    StateGuard(const StateGuard&) = delete;
    StateGuard& operator=(const StateGuard&) = delete;

private:
    StateLock& m_lock;
};

/// From the first call on, a fork waits for `lock`. Otherwise a child process could have a copy that another thread of
/// its parent holds, and would wait for ever.
template <StateLock& lock>
void holdDuringFork() noexcept
{
    static constinit std::atomic<bool> s_handlesForks = false;
    const auto release = []() VX_NO_THREAD_SAFETY_ANALYSIS { lock.unlock(); };
    handleForks(
        s_handlesForks, []() VX_NO_THREAD_SAFETY_ANALYSIS { lock.lock(); }, release, release);
}

} // namespace vxsys::detail
