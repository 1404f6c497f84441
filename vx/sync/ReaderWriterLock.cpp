#include "vx/sync/ReaderWriterLock.h"

#include "vx/detail/ReleaseReport.h"
#include "vx/sync/detail/Answers.h"

namespace vx::sync {

ReaderWriterLock::ReaderWriterLock(const char* name, unsigned int flags)
{
    throwIfFailed(VXRWLockCreate(name, flags, &m_handle));
}

ReaderWriterLock::~ReaderWriterLock() noexcept(false)
{
    const std::int32_t result = VXRWLockDestroy(m_handle);
    if (!failed(result))
        return;
    // This object is destroyed in any case. No other thread can release what the calling thread holds.
    VXRWLockReleaseAll(m_handle);
    VXRWLockDestroy(m_handle);
    vx::detail::ReleaseReport::ofDestructor().report(result);
}

void ReaderWriterLock::wait()
{
    throwIfFailed(VXRWLockAcquireWrite(m_handle));
}

bool ReaderWriterLock::tryWait()
{
    return !failed(VXRWLockTryAcquireWrite(m_handle));
}

bool ReaderWriterLock::waitFor(std::uint32_t milliseconds)
{
    return detail::answerOfTimedWait(VXRWLockTimedAcquireWrite(m_handle, milliseconds));
}

bool ReaderWriterLock::waitSharedFor(std::uint32_t milliseconds)
{
    return detail::answerOfTimedWait(VXRWLockTimedAcquireRead(m_handle, milliseconds));
}

void ReaderWriterLock::signal()
{
    throwIfFailed(VXRWLockReleaseWrite(m_handle));
}

void ReaderWriterLock::waitShared()
{
    throwIfFailed(VXRWLockAcquireRead(m_handle));
}

bool ReaderWriterLock::tryWaitShared()
{
    return !failed(VXRWLockTryAcquireRead(m_handle));
}

void ReaderWriterLock::signalShared()
{
    throwIfFailed(VXRWLockReleaseRead(m_handle));
}

} // namespace vx::sync
