#pragma once

#include "vxsys/Api.h"

#include <cstdint>
#include <exception>

/// Threads. Negative results are failures; null out-parameters give RESULT_INVALID_ARGUMENT.
extern "C" {

/// The function of a thread. It must not throw. Its return value is the result of the thread. The thread may also end
/// by `pthread_exit`.
using VXThreadFunction = void* (*)(void* argument);

/// Refers to a thread that has been neither joined nor detached.
using VXThreadHandle = std::uintptr_t;

inline constexpr VXThreadHandle VX_THREAD_INVALID_HANDLE = UINTPTR_MAX;

/// Starts a thread with the signal mask of its creator. `flags` is 0. `stackSize` counts bytes; 0 is the system's
/// default, and a size that is too small is increased. `*id` becomes what `VXThreadGetCurrentId` returns inside the
/// thread. After a failure `*handle` is `VX_THREAD_INVALID_HANDLE` and `*id` is 0.
VXSYS_API std::int32_t VXThreadCreate(VXThreadFunction function, void* argument, std::uint32_t flags,
    std::uint32_t stackSize, VXThreadHandle* handle, std::uint32_t* id) noexcept;
/// Waits for the thread to end and stores its result. The handle is invalid after that. Fails if a thread joins itself.
VXSYS_API std::int32_t VXThreadJoin(VXThreadHandle handle, void** result) noexcept;
/// Lets the thread continue without a handle. The handle is invalid after that.
VXSYS_API std::int32_t VXThreadDetach(VXThreadHandle handle) noexcept;
/// Instead of joining or detaching: for a thread that runs code of a library that may be unloaded. After
/// `VXThreadLeave`, `VXThreadJoinLeft` waits for its end. Fails if memory is exhausted.
VXSYS_API std::int32_t VXThreadTrack(VXThreadHandle handle) noexcept;
/// Says that a tracked thread will end soon and that the handle will not be used again. RESULT_INVALID_HANDLE for a
/// thread that is not tracked, also in a child process of `fork`.
VXSYS_API std::int32_t VXThreadLeave(VXThreadHandle handle) noexcept;
/// Waits until all threads that were left have ended, except the calling one. A library calls it before it is unloaded.
VXSYS_API void VXThreadJoinLeft() noexcept;

/// An identifier of the calling thread, never 0, and unique among the running threads.
VXSYS_API std::uint32_t VXThreadGetCurrentId() noexcept;
/// A number of the calling thread, never 0, which is not used for any other thread of the process, before or after. In
/// a child process the thread that called `fork` still has its number.
VXSYS_API std::uint64_t VXThreadGetNumber() noexcept;
/// Suspends the calling thread by the monotonic clock. Signals do not shorten the time. `VX_WAIT_FOREVER`
/// (vxsys/Lock.h) never returns, and 0 lets other threads run.
VXSYS_API void VXThreadSleep(std::uint32_t milliseconds) noexcept;
}

namespace vxsys {

/// Call it first in a `catch (...)` around foreign code. It rethrows the unwinding that `pthread_exit` or a
/// cancellation starts: a handler that does not pass that on ends the process.
inline void passForcedUnwind()
{
    if (std::current_exception() == nullptr)
        throw;
}

} // namespace vxsys
