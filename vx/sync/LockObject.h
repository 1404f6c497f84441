#pragma once

#include "vx/ThreadAnnotations.h"
#include "vx/sync/Object.h"

namespace vx::sync {

/// Any lock: `wait` takes it, `signal` releases it. Code that gets a lock from its caller holds it through this type.
class VX_API VX_CAPABILITY("lock") LockObject : public Object {
public:
    ~LockObject() noexcept(false) override;

    void wait() override VX_ACQUIRE() = 0;
    bool tryWait() override VX_TRY_ACQUIRE(true) = 0;
    virtual void signal() VX_RELEASE() = 0;

protected:
    LockObject() noexcept = default;
    LockObject(const LockObject&) noexcept = default;
    LockObject& operator=(const LockObject&) noexcept { return *this; }
};

} // namespace vx::sync
