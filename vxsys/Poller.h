#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// A kept set of sockets to wait for, at a cost that depends on what is ready and not on the size of the set. Each call gives 0
/// or the Windows Sockets number of an error. One thread at a time, except that any thread may wake the one that waits.
extern "C" {

struct VXPollerTag;
using VXPollerHandle = VXPollerTag*;

inline constexpr std::uint32_t VX_POLL_READ = 1;
inline constexpr std::uint32_t VX_POLL_WRITE = 2;
inline constexpr std::uint32_t VX_POLL_URGENT = 4;
/// Reported without being asked for: the socket has failed, or both directions are closed.
inline constexpr std::uint32_t VX_POLL_FAILED = 8;

/// No socket can have this one.
inline constexpr std::uint64_t VX_POLL_NO_ID = UINT64_MAX;

struct VXPollerEvent {
    std::uint64_t id; ///< that of the socket
    std::uint32_t ready; ///< some of `VX_POLL_...`
};

VXSYS_API std::int32_t VXPollerCreate(VXPollerHandle* poller) noexcept;
/// Null is allowed. No thread may wait.
VXSYS_API void VXPollerDestroy(VXPollerHandle poller) noexcept;
/// EINVAL for a socket that is in the set already, and for an interest that cannot be waited for.
VXSYS_API std::int32_t VXPollerAdd(
    VXPollerHandle poller, std::uint32_t socket, std::uint32_t interest, std::uint64_t id) noexcept;
/// EINVAL for a socket that is not in the set; the same for `VXPollerRemove`.
VXSYS_API std::int32_t VXPollerChange(
    VXPollerHandle poller, std::uint32_t socket, std::uint32_t interest, std::uint64_t id) noexcept;
/// Remove a socket before it is closed.
VXSYS_API std::int32_t VXPollerRemove(VXPollerHandle poller, std::uint32_t socket) noexcept;
/// Waits until a socket is ready, and tells up to `size` of them; the others are told by later calls. `*count` is 0 after
/// the time and after a wake. A signal ends the wait with EINTR. `VX_WAIT_FOREVER` waits without a limit, and a longer time
/// than 2^31 - 1 milliseconds is cut to that.
VXSYS_API std::int32_t VXPollerWait(VXPollerHandle poller, VXPollerEvent* events, std::int32_t size,
    std::uint32_t milliseconds, std::int32_t* count) noexcept;
/// Ends the wait under way, or else the next one.
VXSYS_API std::int32_t VXPollerWake(VXPollerHandle poller) noexcept;
}
