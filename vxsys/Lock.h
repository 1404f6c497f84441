#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Locks and signals of one process. `name` labels an object for a person (null: none) and `flags` is 0; neither makes it
/// shared. Milliseconds run on the monotonic clock, and `VX_WAIT_FOREVER` never ends. A timed wait that ran out gives
/// RESULT_TIMED_OUT, and so does a try that found the object busy. Negative is failure.
///
/// Who holds a lock is a thread, and no later thread of the process is ever taken for it: what a thread still holds at its
/// end stays held. A child process by `fork` goes on with the locks of the thread that called it.
extern "C" {

/// Milliseconds for a wait or a sleep without a limit.
inline constexpr std::uint32_t VX_WAIT_FOREVER = 0xFFFFFFFF;

using VXHandle = struct VXHandleTag*;

/// Recursive. A release by a thread that does not hold it is a failure, and so is the destruction while a thread holds it.
VXSYS_API std::int32_t VXMutexCreate(const char* name, std::uint32_t flags, VXHandle* mutex) noexcept;
VXSYS_API std::int32_t VXMutexAcquire(VXHandle mutex) noexcept;
VXSYS_API std::int32_t VXMutexTryAcquire(VXHandle mutex) noexcept;
VXSYS_API std::int32_t VXMutexRelease(VXHandle mutex) noexcept;
/// The two halves of a wait without the mutex. The first releases it as often as the calling thread holds it and stores that
/// number, 0 if it does not hold it. The second takes it that often again.
VXSYS_API std::int32_t VXMutexReleaseAll(VXHandle mutex, std::uint32_t* depth) noexcept;
VXSYS_API std::int32_t VXMutexReacquire(VXHandle mutex, std::uint32_t depth) noexcept;
VXSYS_API std::int32_t VXMutexDestroy(VXHandle mutex) noexcept;

/// A signal releases one thread that is waiting at that moment, and each signal another one. A signal that finds no such
/// thread stays, at most one of them, and the next wait takes it.
VXSYS_API std::int32_t VXEventCreate(const char* name, std::uint32_t flags, VXHandle* event) noexcept;
VXSYS_API std::int32_t VXEventWait(VXHandle event) noexcept;
VXSYS_API std::int32_t VXEventTimedWait(VXHandle event, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXEventSignal(VXHandle event) noexcept;
VXSYS_API std::int32_t VXEventDestroy(VXHandle event) noexcept;

/// Created closed. While it is open, every wait passes. Opening it releases all threads that are waiting at that moment,
/// even if it is closed at once.
VXSYS_API std::int32_t VXGateCreate(const char* name, std::uint32_t flags, VXHandle* gate) noexcept;
VXSYS_API std::int32_t VXGateWait(VXHandle gate) noexcept;
VXSYS_API std::int32_t VXGateTryWait(VXHandle gate) noexcept;
VXSYS_API std::int32_t VXGateTimedWait(VXHandle gate, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXGateOpen(VXHandle gate) noexcept;
VXSYS_API std::int32_t VXGateClose(VXHandle gate) noexcept;
VXSYS_API std::int32_t VXGateDestroy(VXHandle gate) noexcept;

/// Many readers or one writer, and neither side starves. A waiting writer comes before readers that ask later, except
/// readers that hold a read lock already. A writer that releases lets in all readers that are waiting at that moment.
/// A thread that holds the write lock and asks for either side gets the code of EDEADLK, and so does one that holds a read
/// lock and asks for the write lock. The write lock is released by the thread that holds it, a read lock by any thread.
/// Once a thread has released another thread's read lock, the lock cannot tell whose reads are left: the later request
/// of a reader for the write lock may then wait instead.
VXSYS_API std::int32_t VXRWLockCreate(const char* name, std::uint32_t flags, VXHandle* lock) noexcept;
VXSYS_API std::int32_t VXRWLockAcquireRead(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockTryAcquireRead(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockReleaseRead(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockAcquireWrite(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockTryAcquireWrite(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockReleaseWrite(VXHandle lock) noexcept;
/// Releases what the calling thread holds, on either side. No failure if it holds nothing.
VXSYS_API std::int32_t VXRWLockReleaseAll(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockDestroy(VXHandle lock) noexcept;

/// Counts from 0 to 2^31 - 1; a post beyond that is a failure. The four calls after create also serve named semaphores
/// (vxsys/Named.h).
VXSYS_API std::int32_t VXSemaphoreCreate(
    std::uint32_t value, const char* name, std::uint32_t flags, VXHandle* semaphore) noexcept;
VXSYS_API std::int32_t VXSemaphoreWait(VXHandle semaphore) noexcept;
VXSYS_API std::int32_t VXSemaphoreTryWait(VXHandle semaphore) noexcept;
VXSYS_API std::int32_t VXSemaphorePost(VXHandle semaphore) noexcept;
VXSYS_API std::int32_t VXSemaphoreGetValue(VXHandle semaphore, std::int32_t* value) noexcept;
VXSYS_API std::int32_t VXSemaphoreDestroy(VXHandle semaphore) noexcept;

/// A condition together with a lock. A wait is made between acquire and release, and may end early. A thread that acquires
/// twice, or waits or releases without holding the lock, gets a failure. So does the destruction while a thread holds the
/// lock or waits.
VXSYS_API std::int32_t VXConditionCreate(const char* name, std::uint32_t flags, VXHandle* condition) noexcept;
VXSYS_API std::int32_t VXConditionAcquire(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionRelease(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionWait(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionTimedWait(VXHandle condition, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXConditionSignal(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionBroadcast(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionDestroy(VXHandle condition) noexcept;
}
