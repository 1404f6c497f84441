#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Locks and signals of one process. `name` is a label for diagnostics (null: none), and `flags` is 0. Time is counted
/// in milliseconds on the monotonic clock; `VX_WAIT_FOREVER` has no limit. RESULT_TIMED_OUT if a timed wait ends
/// without success, or if a try finds the object in use. Negative is failure.
///
/// Locks belong to threads. A lock that a thread holds when it ends stays locked: no later thread is taken for the
/// holder. In a child process by `fork`, the thread that called it still holds its locks.
extern "C" {

/// Milliseconds for a wait or a sleep without a limit.
inline constexpr std::uint32_t VX_WAIT_FOREVER = 0xFFFFFFFF;

using VXHandle = struct VXHandleTag*;

/// Recursive. Releasing it on another thread than the holder's is a failure, and so is destroying it while a thread
/// holds it.
VXSYS_API std::int32_t VXMutexCreate(const char* name, std::uint32_t flags, VXHandle* mutex) noexcept;
VXSYS_API std::int32_t VXMutexAcquire(VXHandle mutex) noexcept;
VXSYS_API std::int32_t VXMutexTryAcquire(VXHandle mutex) noexcept;
VXSYS_API std::int32_t VXMutexTimedAcquire(VXHandle mutex, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXMutexRelease(VXHandle mutex) noexcept;
/// The two halves of a wait without the mutex. The first one releases it as often as the calling thread holds it and
/// stores that number, 0 if the thread does not hold it. The second one acquires it that often again.
VXSYS_API std::int32_t VXMutexReleaseAll(VXHandle mutex, std::uint32_t* depth) noexcept;
VXSYS_API std::int32_t VXMutexReacquire(VXHandle mutex, std::uint32_t depth) noexcept;
VXSYS_API std::int32_t VXMutexDestroy(VXHandle mutex) noexcept;

/// Each signal releases one thread that is waiting at that moment. If none waits, one signal is kept for the next wait;
/// further ones are dropped.
VXSYS_API std::int32_t VXEventCreate(const char* name, std::uint32_t flags, VXHandle* event) noexcept;
VXSYS_API std::int32_t VXEventWait(VXHandle event) noexcept;
VXSYS_API std::int32_t VXEventTimedWait(VXHandle event, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXEventSignal(VXHandle event) noexcept;
VXSYS_API std::int32_t VXEventDestroy(VXHandle event) noexcept;

/// Created closed. While it is open, waits return at once. Opening it releases all threads that are waiting at that
/// moment, even if it is closed at once.
VXSYS_API std::int32_t VXGateCreate(const char* name, std::uint32_t flags, VXHandle* gate) noexcept;
VXSYS_API std::int32_t VXGateWait(VXHandle gate) noexcept;
VXSYS_API std::int32_t VXGateTryWait(VXHandle gate) noexcept;
VXSYS_API std::int32_t VXGateTimedWait(VXHandle gate, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXGateOpen(VXHandle gate) noexcept;
VXSYS_API std::int32_t VXGateClose(VXHandle gate) noexcept;
VXSYS_API std::int32_t VXGateDestroy(VXHandle gate) noexcept;

/// Many readers or one writer, and neither side starves. A waiting writer is served before readers that arrive later,
/// except readers that already hold a read lock. A writer that releases admits all readers that are waiting at that
/// moment.
///
/// A holder of the write lock that asks for either side, and a holder of a read lock that asks for the write lock, get
/// the code of EDEADLK. The write lock is released by the thread that holds it, a read lock by any thread. But if a
/// thread has released the read lock of another one, the lock does not know whose read locks are left. A reader that
/// then asks for the write lock may wait instead of getting the failure.
VXSYS_API std::int32_t VXRWLockCreate(const char* name, std::uint32_t flags, VXHandle* lock) noexcept;
VXSYS_API std::int32_t VXRWLockAcquireRead(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockTryAcquireRead(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockTimedAcquireRead(VXHandle lock, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXRWLockReleaseRead(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockAcquireWrite(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockTryAcquireWrite(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockTimedAcquireWrite(VXHandle lock, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXRWLockReleaseWrite(VXHandle lock) noexcept;
/// Releases the side that the calling thread holds. Succeeds if it holds nothing.
VXSYS_API std::int32_t VXRWLockReleaseAll(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockDestroy(VXHandle lock) noexcept;

/// A count from 0 to 2^31 - 1; a post beyond that is a failure. The five functions after the create also work on named
/// semaphores (vxsys/Named.h).
VXSYS_API std::int32_t VXSemaphoreCreate(
    std::uint32_t value, const char* name, std::uint32_t flags, VXHandle* semaphore) noexcept;
VXSYS_API std::int32_t VXSemaphoreWait(VXHandle semaphore) noexcept;
VXSYS_API std::int32_t VXSemaphoreTryWait(VXHandle semaphore) noexcept;
VXSYS_API std::int32_t VXSemaphoreTimedWait(VXHandle semaphore, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXSemaphorePost(VXHandle semaphore) noexcept;
VXSYS_API std::int32_t VXSemaphoreGetValue(VXHandle semaphore, std::int32_t* value) noexcept;
VXSYS_API std::int32_t VXSemaphoreDestroy(VXHandle semaphore) noexcept;

/// A condition together with a lock. A wait is made between acquire and release, and may end early. A thread that
/// acquires the lock twice, or waits or releases without holding it, gets a failure. Destroying it while a thread holds
/// the lock or waits is a failure too.
VXSYS_API std::int32_t VXConditionCreate(const char* name, std::uint32_t flags, VXHandle* condition) noexcept;
VXSYS_API std::int32_t VXConditionAcquire(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionRelease(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionWait(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionTimedWait(VXHandle condition, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXConditionSignal(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionBroadcast(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionDestroy(VXHandle condition) noexcept;

/// Receives a text of several lines that names the locks and what each thread held and acquired. It is called once for
/// each pair of locks, in the thread that is about to wait.
using VXLockOrderReport = void (*)(const char* text, void* context);

/// Starts to check the order in which threads acquire mutexes, reader-writer locks, semaphores and conditions. If there
/// are two orders, so that threads could wait for each other for ever, that is reported, even if they do not wait this
/// time. A null `report` writes to standard error. Tries and waits with a limit are no part of an order, and neither is
/// a semaphore (or a read lock) that is released by another thread than the one that acquired it. Locks that are held
/// at the start are not known. The checks make locks slow. Without this call, the environment variable
/// VXLIB4_LOCK_ORDER starts them, unless it is empty or 0.
VXSYS_API void VXLockOrderStart(VXLockOrderReport report, void* context) noexcept;
/// Another thread may still be in the report function when this call returns.
VXSYS_API void VXLockOrderStop() noexcept;
}
