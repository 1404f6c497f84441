#include "vx/sync/Mutex.h"

#include "vx/detail/ReleaseReport.h"
#include "vx/sync/detail/Answers.h"

namespace vx::sync {

Mutex::Mutex(const char* name, unsigned int flags)
{
    throwIfFailed(VXMutexCreate(name, flags, &m_handle));
}

Mutex::~Mutex() noexcept(false)
{
    const std::int32_t result = VXMutexDestroy(m_handle);
    if (!failed(result))
        return;
    // This object is destroyed in any case. If the calling thread holds the mutex, no other thread can ever release it.
    std::uint32_t depth = 0;
    VXMutexReleaseAll(m_handle, &depth);
    VXMutexDestroy(m_handle);
    vx::detail::ReleaseReport::ofDestructor().report(result);
}

void Mutex::wait()
{
    throwIfFailed(VXMutexAcquire(m_handle));
}

bool Mutex::tryWait()
{
    return !failed(VXMutexTryAcquire(m_handle));
}

bool Mutex::waitFor(std::uint32_t milliseconds)
{
    return detail::answerOfTimedWait(VXMutexTimedAcquire(m_handle, milliseconds));
}

void Mutex::signal()
{
    throwIfFailed(VXMutexRelease(m_handle));
}

MutexPause::MutexPause(Mutex& mutex)
    : m_mutex(mutex)
{
    throwIfFailed(VXMutexReleaseAll(m_mutex.m_handle, &m_depth));
}

MutexPause::~MutexPause() noexcept
{
    VXMutexReacquire(m_mutex.m_handle, m_depth); // if it fails, the holder's later release throws
}

} // namespace vx::sync
