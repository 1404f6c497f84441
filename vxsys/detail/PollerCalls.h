#pragma once

#include "vxsys/Lock.h"
#include "vxsys/Net.h"
#include "vxsys/Poller.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <memory>
#include <new>

namespace vxsys::detail {

inline constexpr std::uint32_t ALL_INTERESTS = VX_POLL_READ | VX_POLL_WRITE | VX_POLL_URGENT;

constexpr bool isInterest(std::uint32_t interest, std::uint64_t id) noexcept
{
    return (interest & ~ALL_INTERESTS) == 0 && id != VX_POLL_NO_ID;
}

/// The time of a wait in the form of the system's calls.
constexpr int pollTime(std::uint32_t milliseconds) noexcept
{
    return milliseconds == VX_WAIT_FOREVER ? -1 : static_cast<int>(std::min<std::uint32_t>(milliseconds, INT_MAX));
}

/// Windows Sockets has no error numbers for a socket that is already in the set, or not in it.
inline std::int32_t pollerError(int error) noexcept
{
    return VXNativeSocketError(error == EEXIST || error == ENOENT ? EINVAL : error);
}

/// `open` prepares a new poller and returns a native error or 0.
template <class Poller>
std::int32_t createPoller(Poller** poller, int (*open)(Poller&) noexcept) noexcept
{
    if (poller == nullptr)
        return pollerError(EINVAL);
    *poller = nullptr;
    std::unique_ptr<Poller> made(new (std::nothrow) Poller);
    if (made == nullptr)
        return pollerError(ENOMEM);
    if (const int error = open(*made); error != 0)
        return pollerError(error);
    *poller = made.release();
    return 0;
}

} // namespace vxsys::detail
