#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/sync/Atomic.h"
#include "vx/sync/FakeMutex.h"
#include "vx/sync/Mutex.h"
#include "vx/sync/ReaderWriterLock.h"

namespace vx::sync {

Object::~Object() noexcept(false) = default;

LockObject::~LockObject() noexcept(false) = default;

Atomic::~Atomic() noexcept = default;

FakeAtomic::~FakeAtomic() noexcept = default;

FakeMutex::FakeMutex(const char*, unsigned int) noexcept { }

FakeMutex::~FakeMutex() noexcept = default;

void FakeMutex::wait() { }

bool FakeMutex::tryWait()
{
    return true;
}

void FakeMutex::signal() { }

Mutex::Mutex(const char* name, unsigned int flags)
{
    throwIfFailed(VXMutexCreate(name, flags, &m_handle));
}

Mutex::~Mutex() noexcept(false)
{
    throwIfFailed(VXMutexDestroy(m_handle));
}

void Mutex::wait()
{
    throwIfFailed(VXMutexAcquire(m_handle));
}

bool Mutex::tryWait()
{
    return !failed(VXMutexTryAcquire(m_handle));
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
    VXMutexReacquire(m_mutex.m_handle, m_depth); // a failure shows when the holder releases it
}

ReaderWriterLock::ReaderWriterLock(const char* name, unsigned int flags)
{
    throwIfFailed(VXRWLockCreate(name, flags, &m_handle));
}

ReaderWriterLock::~ReaderWriterLock() noexcept(false)
{
    throwIfFailed(VXRWLockDestroy(m_handle));
}

void ReaderWriterLock::wait()
{
    throwIfFailed(VXRWLockAcquireWrite(m_handle));
}

bool ReaderWriterLock::tryWait()
{
    return !failed(VXRWLockTryAcquireWrite(m_handle));
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
