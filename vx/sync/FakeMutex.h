#pragma once

#include "vx/sync/LockObject.h"

namespace vx::sync {

/// A lock that locks nothing, for code that requires a lock object where no locking is needed. It never blocks.
class VX_API FakeMutex : public LockObject {
public:
    /// Takes the arguments of a `Mutex` and ignores them.
    explicit FakeMutex(const char* name = nullptr, unsigned int flags = 0) noexcept;
    ~FakeMutex() noexcept override;

    // LockObject
    void wait() override VX_ACQUIRE();
    bool tryWait() override VX_TRY_ACQUIRE(true);
    void signal() override VX_RELEASE();
};

} // namespace vx::sync
