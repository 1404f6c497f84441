#pragma once

#include "vx/sync/LockObject.h"

namespace vx::sync {

/// The locking interface where no locking is wanted: it never blocks.
class VX_API FakeMutex : public LockObject {
public:
    /// Both arguments are there for the look of a mutex.
    explicit FakeMutex(const char* name = nullptr, unsigned int flags = 0) noexcept;
    ~FakeMutex() noexcept override;

    // LockObject
    void wait() override VX_ACQUIRE();
    bool tryWait() override VX_TRY_ACQUIRE(true);
    void signal() override VX_RELEASE();
};

} // namespace vx::sync
