#pragma once

#include "vx/sync/LockObject.h"
#include "vx/sync/ScopedWait.h"

namespace vx::sync {

/// Holds a lock to the end of the block, however the block is left. Adds no reference: the lock must outlive the guard.
/// A failed release throws, unless the block is left by an exception.
class [[nodiscard]] VX_SCOPED_CAPABILITY ScopedLock {
public:
    explicit ScopedLock(LockObject& lock) VX_ACQUIRE(lock)
        : m_hold(&lock)
    {
    }
    ~ScopedLock() noexcept(false) VX_RELEASE() { } // NOLINT(modernize-use-equals-default): not with this attribute
    ScopedLock(const ScopedLock&) = delete;
    ScopedLock& operator=(const ScopedLock&) = delete;

private:
    const ScopedWait<LockObject> m_hold;
};

} // namespace vx::sync
