#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Waits for sockets in a set that is kept between waits. The cost of a wait depends on how many sockets are ready, not
/// on the size of the set. Each call returns 0 or the Windows Sockets number of an error. One thread at a time, except
/// that any thread may call `VXPollerWake`.
extern "C" {

struct VXPollerTag;
using VXPollerHandle = VXPollerTag*;

inline constexpr std::uint32_t VX_POLL_READ = 1;
inline constexpr std::uint32_t VX_POLL_WRITE = 2;
inline constexpr std::uint32_t VX_POLL_URGENT = 4;
/// Always reported: the socket has failed, or both directions are closed.
inline constexpr std::uint32_t VX_POLL_FAILED = 8;

/// Not allowed as the identifier of a socket.
inline constexpr std::uint64_t VX_POLL_NO_ID = UINT64_MAX;

struct VXPollerEvent {
    std::uint64_t id; ///< that of the ready socket
    std::uint32_t ready; ///< a sum of `VX_POLL_...`
};

VXSYS_API std::int32_t VXPollerCreate(VXPollerHandle* poller) noexcept;
/// Null is allowed. No thread may be waiting.
VXSYS_API void VXPollerDestroy(VXPollerHandle poller) noexcept;
/// EINVAL for a socket that is already in the set, and for an invalid interest.
VXSYS_API std::int32_t VXPollerAdd(
    VXPollerHandle poller, std::uint32_t socket, std::uint32_t interest, std::uint64_t id) noexcept;
/// Both return EINVAL for a socket that is not in the set.
VXSYS_API std::int32_t VXPollerChange(
    VXPollerHandle poller, std::uint32_t socket, std::uint32_t interest, std::uint64_t id) noexcept;
/// Remove a socket before it is closed.
VXSYS_API std::int32_t VXPollerRemove(VXPollerHandle poller, std::uint32_t socket) noexcept;
/// Waits until a socket is ready and reports up to `size` of them; later calls report the others. `*count` is 0 after
/// the time-out and after `VXPollerWake`. A signal ends the wait with EINTR. `VX_WAIT_FOREVER` has no limit, and a time
/// above 2^31 - 1 milliseconds is shortened to that.
VXSYS_API std::int32_t VXPollerWait(VXPollerHandle poller, VXPollerEvent* events, std::int32_t size,
    std::uint32_t milliseconds, std::int32_t* count) noexcept;
/// Ends the wait of the other thread, or the next wait if none is waiting.
VXSYS_API std::int32_t VXPollerWake(VXPollerHandle poller) noexcept;
}
