#pragma once

#include "vx/sync/LockObject.h"
#include "vxsys/Lock.h"

#include <cstdint>

namespace vx::sync {

/// One thread at a time. A thread that holds it may take it again, and releases it as often. A release by another thread
/// and the destruction of a held mutex fail with a ResultException.
class VX_API Mutex : public LockObject {
public:
    /// `name` labels it for a person; null is anonymous.
    explicit Mutex(const char* name = nullptr, unsigned int flags = 0);
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;
    ~Mutex() noexcept(false) override;

    // LockObject
    void wait() override VX_ACQUIRE();
    bool tryWait() override VX_TRY_ACQUIRE(true);
    void signal() override VX_RELEASE();

private:
    friend class MutexPause;

    VXHandle m_handle = nullptr;
};

/// Lets go of a mutex, however often the calling thread holds it, and takes it that often again at the end of the block:
/// what a thread does that blocks until the mutex's next holder has done something.
class VX_API MutexPause {
public:
    [[nodiscard]] explicit MutexPause(Mutex& mutex);
    ~MutexPause() noexcept;
    MutexPause(const MutexPause&) = delete;
    MutexPause& operator=(const MutexPause&) = delete;

private:
    Mutex& m_mutex;
    std::uint32_t m_depth = 0;
};

} // namespace vx::sync
