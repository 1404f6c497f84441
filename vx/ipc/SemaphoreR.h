#pragma once

#include "vx/Reference.h"
#include "vx/ipc/Semaphore.h"
#include "vx/sync/Mutex.h"

namespace vx::ipc {

/// A semaphore that a thread which owns it takes again at once, and signals as often: one lock for all other threads and
/// processes. A second object of the same name knows nothing of the owner of the first. One that ends while it is owned
/// gives back what it took.
class VX_API SemaphoreR : public Semaphore {
public:
    /// `mutex` guards the owner inside the process. It is counted, and may be one that the caller guards something of its
    /// own with; null makes one. A thread that holds it and blocks in `wait` lets go of it for that time.
    SemaphoreR(const char* name, std::uint32_t value, sync::Mutex* mutex);
    ~SemaphoreR() noexcept(false) override;

    // Semaphore
    void wait() override;
    bool tryWait() override;
    /// From a thread that does not own it: nothing happens.
    void signal() override;

private:
    bool enterAgain(std::uint32_t thread);
    void own(std::uint32_t thread);

    // Guarded by the mutex.
    std::uint32_t m_owner = 0;
    std::uint32_t m_count = 0;
    const Reference<sync::Mutex> m_mutex;
};

} // namespace vx::ipc
