#pragma once

#include "vx/ThreadAnnotations.h"
#include "vx/sync/Object.h"

namespace vx::sync {

/// Any lock: `wait` takes it, `signal` releases it. Code that gets a lock from its caller holds it through this type.
///
/// The guards of the standard library take it too. Their destructors are `noexcept`, so a release that fails ends the
/// program; `ScopedLock` throws.
class VX_API VX_CAPABILITY("lock") LockObject : public Object {
public:
    ~LockObject() noexcept(false) override;

    void wait() override VX_ACQUIRE() = 0;
    bool tryWait() override VX_TRY_ACQUIRE(true) = 0;
    virtual void signal() VX_RELEASE() = 0;

    /// The names that std::lock_guard, std::unique_lock and std::scoped_lock use.
    void lock() VX_ACQUIRE() { wait(); }
    bool try_lock() VX_TRY_ACQUIRE(true) { return tryWait(); }
    void unlock() VX_RELEASE() { signal(); }

protected:
    LockObject() noexcept = default;
    LockObject(const LockObject&) noexcept = default;
    LockObject& operator=(const LockObject&) noexcept { return *this; }
};

} // namespace vx::sync
