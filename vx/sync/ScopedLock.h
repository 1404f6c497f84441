#pragma once

#include "vx/sync/LockObject.h"
#include "vx/sync/ScopedWait.h"

namespace vx::sync {

/// Holds a lock to the end of the block, however the block is left. Not counted: the lock outlives the guard. A failed
/// release is told, unless an exception already on its way out has more to tell.
class [[nodiscard]] VX_SCOPED_CAPABILITY ScopedLock {
public:
    explicit ScopedLock(LockObject& lock) VX_ACQUIRE(lock)
        : m_hold(&lock)
    {
    }
    ~ScopedLock() noexcept(false) VX_RELEASE() { }
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    const ScopedWait<LockObject> m_hold;
};

} // namespace vx::sync
