#pragma once

#include "vxsys/Api.h"

#include <cstdint>
#include <exception>

/// Threads. Negative results are failures; null out-parameters give RESULT_INVALID_ARGUMENT.
extern "C" {

/// What a thread runs. It must not throw. What it gives is the result of the thread. It may end by `pthread_exit`.
using VXThreadFunction = void* (*)(void* argument);

/// Leads to a thread that has been neither joined nor detached.
using VXThreadHandle = std::uintptr_t;

inline constexpr VXThreadHandle VX_THREAD_INVALID_HANDLE = UINTPTR_MAX;

/// Starts a thread. `flags` is 0. `stackSize` counts bytes, 0 is the system's default, and less than a thread can live
/// with is raised to that. `*id` is what `VXThreadGetCurrentId` gives inside the thread. After a failure `*handle` is
/// `VX_THREAD_INVALID_HANDLE` and `*id` is 0. The thread has the signal mask of its creator.
VXSYS_API std::int32_t VXThreadCreate(VXThreadFunction function, void* argument, std::uint32_t flags,
    std::uint32_t stackSize, VXThreadHandle* handle, std::uint32_t* id) noexcept;
/// Waits for the thread's end and gives its result. The handle is invalid then. A thread that joins itself gets a failure.
VXSYS_API std::int32_t VXThreadJoin(VXThreadHandle handle, void** result) noexcept;
/// Lets the thread run on without a handle, which is invalid then.
VXSYS_API std::int32_t VXThreadDetach(VXThreadHandle handle) noexcept;
/// For a thread that runs code of a library, instead of joining or detaching it. Once it has been left, `VXThreadJoinLeft`
/// waits for its end. Fails when memory is exhausted.
VXSYS_API std::int32_t VXThreadTrack(VXThreadHandle handle) noexcept;
/// A tracked thread will end soon, and the handle is used no more. RESULT_INVALID_HANDLE for one that is not tracked, as in a
/// child of fork.
VXSYS_API std::int32_t VXThreadLeave(VXThreadHandle handle) noexcept;
/// Waits for the end of all threads that were left, apart from the calling one. A library calls it before it is unloaded.
VXSYS_API void VXThreadJoinLeft() noexcept;

/// An identifier of the calling thread, never 0, unique among the threads that live.
VXSYS_API std::uint32_t VXThreadGetCurrentId() noexcept;
/// A number of the calling thread, never 0, that no other thread of the process has had or will have. The thread that calls
/// `fork` keeps it in the child process.
VXSYS_API std::uint64_t VXThreadGetNumber() noexcept;
/// Suspends the calling thread on the monotonic clock; signals do not shorten it. `VX_WAIT_FOREVER` (vxsys/Lock.h)
/// never returns, 0 yields the processor to other threads.
VXSYS_API void VXThreadSleep(std::uint32_t milliseconds) noexcept;
}

namespace vxsys {

/// First in a `catch (...)` around foreign code: throws on what runs through the frames of a thread after `pthread_exit` or
/// its cancellation. That is no exception, and a handler that keeps it ends the process.
inline void passForcedUnwind()
{
    if (std::current_exception() == nullptr)
        throw;
}

} // namespace vxsys
