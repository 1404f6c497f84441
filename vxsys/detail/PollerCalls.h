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
#include <poll.h>
#include <unistd.h>

namespace vxsys::detail {

inline constexpr std::uint32_t ALL_INTERESTS = VX_POLL_READ | VX_POLL_WRITE | VX_POLL_URGENT;

constexpr bool isInterest(std::uint32_t interest, std::uint64_t id) noexcept
{
    return (interest & ~ALL_INTERESTS) == 0 && id != VX_POLL_NO_ID;
}

inline constexpr struct {
    std::uint32_t ready;
    short native;
} POLL_EVENTS[] = {
    {VX_POLL_READ, POLLIN},
    {VX_POLL_WRITE, POLLOUT},
    {VX_POLL_URGENT, POLLPRI},
    {VX_POLL_FAILED, POLLERR | POLLHUP},
};

constexpr short nativeOf(std::uint32_t interest) noexcept
{
    int native = 0;
    for (const auto& row : POLL_EVENTS)
        native |= (interest & row.ready) != 0 ? row.native : 0;
    return static_cast<short>(native);
}

constexpr std::uint32_t readyOf(std::uint32_t native) noexcept
{
    std::uint32_t ready = 0;
    for (const auto& row : POLL_EVENTS)
        ready |= (native & static_cast<std::uint32_t>(row.native)) != 0 ? row.ready : 0;
    return ready;
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

/// Checks the arguments of a wait. `*count` becomes 0.
inline bool isWait(VXPollerHandle poller, const VXPollerEvent* events, std::int32_t size, std::int32_t* count) noexcept
{
    if (count != nullptr)
        *count = 0;
    return poller != nullptr && events != nullptr && size >= 1 && count != nullptr;
}

/// Ends a wait for a descriptor that `number` is written to. One that is full ends it already.
template <class Number>
std::int32_t wakeBy(int descriptor, Number number) noexcept
{
    const bool isAwake = ::write(descriptor, &number, sizeof number) == sizeof number || errno == EAGAIN;
    return isAwake ? 0 : pollerError(errno);
}

} // namespace vxsys::detail
