#include "vx/net/detail/NativeSocket.h"

#include <algorithm>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace vx::net::detail {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::int64_t NANOSECONDS = 1'000'000'000;
constexpr std::int64_t FOR_EVER_SECONDS = 1'000'000'000; // some thirty years

/// Keeps descriptors off the number that means a closed socket.
unsigned int awayFromZero(int descriptor) noexcept
{
    if (descriptor != 0)
        return static_cast<unsigned int>(descriptor);
    constexpr int FIRST_FREE = 3; // nor where a standard stream may be opened again
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, FIRST_FREE);
    const int error = errno;
    ::close(descriptor);
    errno = error;
    return static_cast<unsigned int>(moved);
}

} // namespace

ENUM_VX_E_SOCKET lastError() noexcept
{
    return VX_E_SOCKETFromNativeSocketError(VXLastNativeSocketError());
}

unsigned int openSocket(int family, int type, int protocol) noexcept
{
    return awayFromZero(::socket(family, type | SOCK_CLOEXEC, protocol));
}

unsigned int acceptSocket(unsigned int listener, sockaddr* peer, socklen_t* length) noexcept
{
    return awayFromZero(::accept4(static_cast<int>(listener), peer, length, SOCK_CLOEXEC));
}

int connectSocket(unsigned int socket, const sockaddr* address, socklen_t length) noexcept
{
    const int result = ::connect(static_cast<int>(socket), address, length);
    if (result == 0 || errno != EINTR)
        return result;
    // The system goes on with the attempt: a second call would only be told so.
    pollfd entry {static_cast<int>(socket), POLLOUT, 0};
    if (retryOnSignal([&] { return ::poll(&entry, 1, -1); }) < 0)
        return -1;
    int error = 0;
    socklen_t size = sizeof error;
    if (::getsockopt(static_cast<int>(socket), SOL_SOCKET, SO_ERROR, &error, &size) < 0)
        return -1;
    errno = error;
    return error == 0 ? 0 : -1;
}

int closeSocket(unsigned int socket) noexcept
{
    const int result = ::close(static_cast<int>(socket));
    return result != 0 && errno == EINTR ? 0 : result;
}

ENUM_VX_E_SOCKET takePendingError(unsigned int socket) noexcept
{
    int error = 0;
    socklen_t length = sizeof error;
    if (::getsockopt(static_cast<int>(socket), SOL_SOCKET, SO_ERROR, &error, &length) < 0)
        return lastError();
    errno = error;
    return lastError();
}

int waitFor(std::span<pollfd> entries, const timeval* timeout) noexcept
{
    if (timeout != nullptr && (timeout->tv_sec < 0 || timeout->tv_usec < 0)) {
        errno = EINVAL;
        return -1;
    }
    std::optional<Clock::time_point> end;
    if (timeout != nullptr && timeout->tv_sec < FOR_EVER_SECONDS)
        end = Clock::now() + std::chrono::seconds(timeout->tv_sec) + std::chrono::microseconds(timeout->tv_usec);
    return waitUntil(entries, end);
}

int waitUntil(std::span<pollfd> entries, std::optional<Clock::time_point> end) noexcept
{
    if (std::ranges::any_of(entries, [](const pollfd& entry) { return entry.fd < 0; })) { // `poll` would pass it over
        errno = EBADF;
        return -1;
    }
    for (;;) {
        timespec left {};
        if (end) {
            const auto rest = std::max<std::int64_t>((*end - Clock::now()) / std::chrono::nanoseconds(1), 0);
            left.tv_sec = rest / NANOSECONDS;
            left.tv_nsec = rest % NANOSECONDS;
        }
        int ready = ::ppoll(entries.data(), entries.size(), end ? &left : nullptr, nullptr);
        if (ready <= 0)
            return ready;
        ready = 0;
        for (pollfd& entry : entries) {
            if ((entry.revents & POLLNVAL) != 0) {
                errno = EBADF;
                return -1;
            }
            ready += isReadable(entry) || isWritable(entry) || isExceptional(entry);
        }
        if (ready > 0)
            return ready;
        // What hung up is told by `poll` asked or unasked; nobody here waits for that.
        for (pollfd& entry : entries) {
            if (entry.revents != 0)
                entry.fd = -1;
        }
    }
}

} // namespace vx::net::detail
