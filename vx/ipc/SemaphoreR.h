#pragma once

#include "vx/Reference.h"
#include "vx/ipc/Semaphore.h"
#include "vx/sync/Mutex.h"

namespace vx::ipc {

/// A semaphore that its owner, a thread, may take again at once and has to signal as often: one lock for all other threads
/// and processes. A second object of the same name knows nothing of the first one's owner. An object that is destroyed while
/// it is owned gives back what it took.
///
/// A child process by `fork` owns nothing: its copy of an owned object is free for it to wait on, and gives nothing back.
class VX_API SemaphoreR : public Semaphore {
public:
    /// `mutex` guards the owner inside the process. A reference is kept. The caller may guard other things with it as well;
    /// null makes a new one. A thread that holds it and blocks in `wait` releases it for that time.
    SemaphoreR(const char* name, std::uint32_t value, sync::Mutex* mutex);
    ~SemaphoreR() noexcept(false) override;

    // Semaphore
    void wait() override;
    bool tryWait() override;
    /// From a thread that does not own it: nothing happens.
    void signal() override;

private:
    bool isOwnedHere() const noexcept VX_REQUIRES(*m_mutex);
    bool enterAgain() VX_REQUIRES(*m_mutex);
    void own() VX_REQUIRES(*m_mutex);

    const Reference<sync::Mutex> m_mutex;
    /// By `VXThreadGetNumber`: a thread that has ended owns it still, and no later one.
    std::uint64_t m_owner VX_GUARDED_BY(*m_mutex) = 0;
    std::uint32_t m_count VX_GUARDED_BY(*m_mutex) = 0;
    std::uint32_t m_process VX_GUARDED_BY(*m_mutex) = 0; ///< of the owner
};

} // namespace vx::ipc
