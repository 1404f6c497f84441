#pragma once

#include "vx/sync/LockObject.h"
#include "vxsys/Lock.h"

#include <cstdint>

namespace vx::sync {

/// Held by one thread at a time. The thread that holds it may take it again, and must release it as often as it took
/// it. A release by any other thread throws ResultException. A mutex that a thread holds when it ends stays locked:
/// no later thread can acquire it.
class VX_API Mutex : public LockObject {
public:
    /// `name` is a label for diagnostics; null for none. `flags` is 0.
    explicit Mutex(const char* name = nullptr, unsigned int flags = 0);
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;
    /// If the mutex is held, throws ResultException, unless another exception is in flight. The object is destroyed in
    /// either case. If another thread holds the mutex or waits for it, the platform's part of it stays in memory for
    /// that thread.
    ~Mutex() noexcept(false) override;

    // LockObject
    void wait() override VX_ACQUIRE();
    bool tryWait() override VX_TRY_ACQUIRE(true);
    void signal() override VX_RELEASE();

    /// False if it could not be acquired within `milliseconds`; `VX_WAIT_FOREVER` has no limit.
    bool waitFor(std::uint32_t milliseconds) VX_TRY_ACQUIRE(true);

private:
    friend class MutexPause;

    VXHandle m_handle = nullptr;
};

/// Releases a mutex completely for the length of a block, however often the calling thread holds it, and acquires it as
/// often again at the end. For a thread that must wait for what another thread does under the same mutex.
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
