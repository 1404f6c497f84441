#pragma once

#include "vxsys/Lock.h"
#include "vxsys/Net.h"
#include "vxsys/Poller.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>

namespace vxsys::detail {

inline constexpr std::uint32_t ALL_INTERESTS = VX_POLL_READ | VX_POLL_WRITE | VX_POLL_URGENT;

constexpr bool isInterest(std::uint32_t interest, std::uint64_t id) noexcept
{
    return (interest & ~ALL_INTERESTS) == 0 && id != VX_POLL_NO_ID;
}

/// The time of a wait as the system's calls take it.
constexpr int pollTime(std::uint32_t milliseconds) noexcept
{
    return milliseconds == VX_WAIT_FOREVER ? -1 : static_cast<int>(std::min<std::uint32_t>(milliseconds, INT_MAX));
}

/// The set has no errors of its own in Windows Sockets.
inline std::int32_t pollerError(int error) noexcept
{
    return VXNativeSocketError(error == EEXIST || error == ENOENT ? EINVAL : error);
}

} // namespace vxsys::detail
