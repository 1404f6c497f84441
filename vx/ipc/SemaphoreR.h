#pragma once

#include "vx/Reference.h"
#include "vx/ipc/Semaphore.h"
#include "vx/sync/Mutex.h"

namespace vx::ipc {

/// A recursive semaphore: the owning thread may wait on it again without blocking and must signal it as often. It locks
/// out all other threads and processes. Ownership belongs to the object: a second object of the same name does not
/// share it. An object that is destroyed while it is owned gives back what it took.
///
/// A child process created by `fork` owns nothing. It may wait on its copy of an owned object, and the copy gives
/// nothing back.
class VX_API SemaphoreR : public Semaphore {
public:
    /// `mutex` guards the owner inside the process. A reference is kept. The caller may guard other things with it as
    /// well; null makes a new one. A thread that holds it and blocks in `wait` releases it while it blocks.
    SemaphoreR(const char* name, std::uint32_t value, sync::Mutex* mutex);
    ~SemaphoreR() noexcept(false) override;

    // Semaphore
    void wait() override;
    bool tryWait() override;
    /// Does nothing if the calling thread is not the owner.
    void signal() override;
    bool waitFor(std::uint32_t milliseconds) override;

private:
    bool isOwnedHere() const noexcept VX_REQUIRES(*m_mutex);
    bool enterAgain() VX_REQUIRES(*m_mutex);
    void own() VX_REQUIRES(*m_mutex);

    const Reference<sync::Mutex> m_mutex;
    /// A number from `VXThreadGetNumber`, which is not reused: a thread that has ended remains the owner.
    std::uint64_t m_owner VX_GUARDED_BY(*m_mutex) = 0;
    std::uint32_t m_count VX_GUARDED_BY(*m_mutex) = 0;
    std::uint32_t m_process VX_GUARDED_BY(*m_mutex) = 0; ///< of the owner
};

} // namespace vx::ipc
