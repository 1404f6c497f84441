#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Locks and signals of one process. `name` labels an object for a person (null: none) and `flags` is 0; neither makes it
/// shared. Milliseconds run on the monotonic clock, and `VX_WAIT_FOREVER` never ends. A timed wait that ran out gives
/// RESULT_TIMED_OUT, a try that found the object busy gives the same. Negative is failure.
extern "C" {

inline constexpr std::uint32_t VX_WAIT_FOREVER = 0xFFFFFFFF;

using VXHandle = struct VXHandleTag*;

/// Recursive. A release by a thread that does not hold it, and the destruction of a held one, are failures.
VXSYS_API std::int32_t VXMutexCreate(const char* name, std::uint32_t flags, VXHandle* mutex) noexcept;
VXSYS_API std::int32_t VXMutexAcquire(VXHandle mutex) noexcept;
VXSYS_API std::int32_t VXMutexTryAcquire(VXHandle mutex) noexcept;
VXSYS_API std::int32_t VXMutexRelease(VXHandle mutex) noexcept;
/// The two halves of a wait without the mutex: lets go of it however often the calling thread holds it, and takes it that
/// often again. `*depth` is 0 where it does not hold it at all.
VXSYS_API std::int32_t VXMutexReleaseAll(VXHandle mutex, std::uint32_t* depth) noexcept;
VXSYS_API std::int32_t VXMutexReacquire(VXHandle mutex, std::uint32_t depth) noexcept;
VXSYS_API std::int32_t VXMutexDestroy(VXHandle mutex) noexcept;

/// A signal releases one waiter that waits by then, each signal another one; where none is left, the event stays signalled
/// until the next one comes.
VXSYS_API std::int32_t VXEventCreate(const char* name, std::uint32_t flags, VXHandle* event) noexcept;
VXSYS_API std::int32_t VXEventWait(VXHandle event) noexcept;
VXSYS_API std::int32_t VXEventTimedWait(VXHandle event, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXEventSignal(VXHandle event) noexcept;
VXSYS_API std::int32_t VXEventDestroy(VXHandle event) noexcept;

/// Born closed. All pass while it is open; opening frees everyone who waits at that moment, even if it is closed at once.
VXSYS_API std::int32_t VXGateCreate(const char* name, std::uint32_t flags, VXHandle* gate) noexcept;
VXSYS_API std::int32_t VXGateWait(VXHandle gate) noexcept;
VXSYS_API std::int32_t VXGateTryWait(VXHandle gate) noexcept;
VXSYS_API std::int32_t VXGateTimedWait(VXHandle gate, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXGateOpen(VXHandle gate) noexcept;
VXSYS_API std::int32_t VXGateClose(VXHandle gate) noexcept;
VXSYS_API std::int32_t VXGateDestroy(VXHandle gate) noexcept;

/// Many readers or one writer, and neither side starves: a writer that waits goes before readers that come later, but not
/// before one that reads already and asks again; a writer that leaves lets in the readers that wait by then. A thread that
/// holds the write lock and asks for either gets a failure; one that reads and asks for the write lock waits for itself.
/// The write lock is released by its holder, a read lock by anyone.
VXSYS_API std::int32_t VXRWLockCreate(const char* name, std::uint32_t flags, VXHandle* lock) noexcept;
VXSYS_API std::int32_t VXRWLockAcquireRead(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockTryAcquireRead(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockReleaseRead(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockAcquireWrite(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockTryAcquireWrite(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockReleaseWrite(VXHandle lock) noexcept;
VXSYS_API std::int32_t VXRWLockDestroy(VXHandle lock) noexcept;

/// Counts 0 to 2^31 - 1; a post beyond that is a failure. The four calls behind create serve named semaphores
/// (vxsys/Named.h) as well.
VXSYS_API std::int32_t VXSemaphoreCreate(
    std::uint32_t value, const char* name, std::uint32_t flags, VXHandle* semaphore) noexcept;
VXSYS_API std::int32_t VXSemaphoreWait(VXHandle semaphore) noexcept;
VXSYS_API std::int32_t VXSemaphoreTryWait(VXHandle semaphore) noexcept;
VXSYS_API std::int32_t VXSemaphorePost(VXHandle semaphore) noexcept;
VXSYS_API std::int32_t VXSemaphoreGetValue(VXHandle semaphore, std::int32_t* value) noexcept;
VXSYS_API std::int32_t VXSemaphoreDestroy(VXHandle semaphore) noexcept;

/// A condition with its own lock. A wait is made between acquire and release, and may end early; a thread that acquires
/// twice, or waits or releases without holding it, gets a failure. A condition that somebody holds or waits for is not
/// destroyed.
VXSYS_API std::int32_t VXConditionCreate(const char* name, std::uint32_t flags, VXHandle* condition) noexcept;
VXSYS_API std::int32_t VXConditionAcquire(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionRelease(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionWait(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionTimedWait(VXHandle condition, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXConditionSignal(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionBroadcast(VXHandle condition) noexcept;
VXSYS_API std::int32_t VXConditionDestroy(VXHandle condition) noexcept;
}
