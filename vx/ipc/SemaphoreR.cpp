#include "vx/ipc/SemaphoreR.h"

#include "vx/Exception.h"
#include "vx/sync/ScopedLock.h"
#include "vxsys/Process.h"
#include "vxsys/Thread.h"

namespace vx::ipc {

SemaphoreR::SemaphoreR(const char* name, std::uint32_t value, sync::Mutex* mutex)
    : Semaphore(name, value)
    , m_mutex(mutex != nullptr ? mutex : new sync::Mutex)
{
}

SemaphoreR::~SemaphoreR() noexcept(false)
{
    if (!isOwnedHere())
        return;
    // After this no object could signal it, but other objects of the process may keep the name open.
    try {
        Semaphore::signal();
    } catch (const Exception&) {
        // The destructor of the base class closes it next and reports the failure.
    }
}

void SemaphoreR::wait()
{
    SemaphoreR::waitFor(VX_WAIT_FOREVER);
}

bool SemaphoreR::tryWait()
{
    const sync::ScopedLock guard(*m_mutex);
    if (enterAgain())
        return true;
    if (!Semaphore::tryWait())
        return false;
    own();
    return true;
}

void SemaphoreR::signal()
{
    const sync::ScopedLock guard(*m_mutex);
    if (!isOwnedHere() || m_owner != VXThreadGetNumber())
        return;
    if (m_count < 2) {
        Semaphore::signal();
        m_owner = 0;
        m_count = 0;
    } else {
        --m_count;
    }
}

bool SemaphoreR::waitFor(std::uint32_t milliseconds)
{
    const sync::ScopedLock guard(*m_mutex);
    if (enterAgain())
        return true;
    if (!Semaphore::tryWait()) {
        // The owner may be a thread of this process, which needs the mutex to signal.
        const sync::MutexPause pause(*m_mutex);
        if (!Semaphore::waitFor(milliseconds))
            return false;
    }
    own();
    return true;
}

/// Whether a thread of this process owns it. After `fork` a child process has a copy of its parent's fields.
bool SemaphoreR::isOwnedHere() const noexcept
{
    return m_owner != 0 && m_process == VXProcessGetID();
}

bool SemaphoreR::enterAgain()
{
    if (m_owner != VXThreadGetNumber() || !isOwnedHere())
        return false;
    ++m_count;
    return true;
}

void SemaphoreR::own()
{
    m_owner = VXThreadGetNumber();
    m_count = 1;
    m_process = VXProcessGetID();
}

} // namespace vx::ipc
