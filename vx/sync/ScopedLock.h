#pragma once

#include "vx/sync/LockObject.h"

#include <exception>

namespace vx::sync {

/// Holds a lock to the end of the block, however the block is left. Not counted: the lock outlives the guard. A failed
/// release is told, unless an exception already on its way out has more to tell.
class [[nodiscard]] VX_SCOPED_CAPABILITY ScopedLock {
public:
    explicit ScopedLock(LockObject& lock) VX_ACQUIRE(lock)
        : m_lock(lock)
    {
        m_lock.wait();
    }
    ~ScopedLock() noexcept(false) VX_RELEASE()
    {
        try {
            m_lock.signal();
        } catch (...) {
            if (std::uncaught_exceptions() <= m_exceptionsAtStart)
                throw;
        }
    }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    LockObject& m_lock;
    const int m_exceptionsAtStart = std::uncaught_exceptions();
};

} // namespace vx::sync
