#pragma once

#include "vx/net/SocketResult.h"

#include <cerrno>
#include <chrono>
#include <concepts>
#include <cstdint>
#include <optional>
#include <poll.h>
#include <span>
#include <sys/socket.h>
#include <sys/time.h>

namespace vx::net::detail {

/// All bits 1: no socket.
inline constexpr unsigned int INVALID_SOCKET_HANDLE = 0xFFFFFFFF;

/// The result of the call that has just failed.
ENUM_VX_E_SOCKET lastError() noexcept;

/// A result for a call that gives a negative number when it fails.
template <std::invocable Call>
ENUM_VX_E_SOCKET resultOf(Call&& call)
{
    return call() < 0 ? lastError() : VX_E_SOCKET_OK;
}

/// Repeats a call that a signal has interrupted. Not for `close` and `connect`, whose work goes on all the same.
template <std::invocable Call>
auto retryOnSignal(Call&& call)
{
    for (;;) {
        const auto result = call();
        if (result >= 0 || errno != EINTR)
            return result;
    }
}

/// `socket`, closed on `exec`. Never gives descriptor 0, which means a closed socket here. `INVALID_SOCKET_HANDLE` after a
/// failure.
unsigned int openSocket(int family, int type, int protocol) noexcept;

/// `accept` in the same manner.
unsigned int acceptSocket(unsigned int listener, sockaddr* peer, socklen_t* length) noexcept;

/// `connect`, which waits for the end of the attempt also if a signal interrupts it. -1 with `errno` for a failure.
int connectSocket(unsigned int socket, const sockaddr* address, socklen_t length) noexcept;

/// `close`; a signal in between does not make it fail.
int closeSocket(unsigned int socket) noexcept;

/// The error that waits in a socket, taken out of it.
ENUM_VX_E_SOCKET takePendingError(unsigned int socket) noexcept;

/// Conditions of `poll` as the three sets of `select` have them. What has failed is ready in each: an error can be read,
/// is what a write would meet, and is the exception that a connect ends with.
inline constexpr short WAIT_READ = POLLIN;
inline constexpr short WAIT_WRITE = POLLOUT;
inline constexpr short WAIT_EXCEPT = POLLPRI;

inline bool isReadable(const pollfd& entry) noexcept
{
    return (entry.events & WAIT_READ) != 0 && (entry.revents & (POLLIN | POLLHUP | POLLERR)) != 0;
}
inline bool isWritable(const pollfd& entry) noexcept
{
    return (entry.events & WAIT_WRITE) != 0 && (entry.revents & (POLLOUT | POLLERR)) != 0;
}
inline bool isExceptional(const pollfd& entry) noexcept
{
    return (entry.events & WAIT_EXCEPT) != 0 && (entry.revents & (POLLPRI | POLLERR)) != 0;
}

/// Waits as `select` does, for descriptors of any number: null waits for ever, a zero time looks only. -1 with `errno` for
/// a failure, a time that is none (EINVAL) and a descriptor that is not open (EBADF); else the number of entries that are
/// ready. An entry whose peer has gone without telling what is waited for loses its descriptor.
int waitFor(std::span<pollfd> entries, const timeval* timeout) noexcept;

/// As above up to a moment, or for ever. A signal ends both waits with EINTR; this one may be called again for the rest.
int waitUntil(std::span<pollfd> entries, std::optional<std::chrono::steady_clock::time_point> end) noexcept;

} // namespace vx::net::detail
