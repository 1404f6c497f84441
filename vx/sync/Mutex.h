#pragma once

#include "vx/sync/LockObject.h"
#include "vxsys/Lock.h"

#include <cstdint>

namespace vx::sync {

/// Held by one thread at a time. The thread that holds it may take it again, and must release it as often as it took it.
/// A release by any other thread throws ResultException. What a thread still holds at its end stays held: no later
/// thread gets it.
class VX_API Mutex : public LockObject {
public:
    /// `name` is a label for people; null for none. `flags` is 0.
    explicit Mutex(const char* name = nullptr, unsigned int flags = 0);
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;
    /// For a held mutex it throws ResultException, unless another exception is on its way. The mutex is gone in either
    /// case, and if another thread holds it or waits for it, the platform's part of it stays in memory for that thread.
    ~Mutex() noexcept(false) override;

    // LockObject
    void wait() override VX_ACQUIRE();
    bool tryWait() override VX_TRY_ACQUIRE(true);
    void signal() override VX_RELEASE();

private:
    friend class MutexPause;

    VXHandle m_handle = nullptr;
};

/// Releases a mutex for the length of a block, as often as the calling thread holds it, and then takes it that often again.
/// For a thread that must wait for something that another thread does under the same mutex.
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
