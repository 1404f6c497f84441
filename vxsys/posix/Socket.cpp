#include "vxsys/Socket.h"

#include "vxsys/Net.h"
#include "vxsys/detail/Deadline.h"
#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/Retry.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <span>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

using namespace vxsys::detail;

// The entries of the caller have the layout that the system needs.
static_assert(sizeof(VXSocketWait) == sizeof(pollfd) && offsetof(VXSocketWait, socket) == offsetof(pollfd, fd)
    && offsetof(VXSocketWait, wanted) == offsetof(pollfd, events)
    && offsetof(VXSocketWait, ready) == offsetof(pollfd, revents));
static_assert(VX_SOCKET_READ == POLLIN && VX_SOCKET_WRITE == POLLOUT && VX_SOCKET_EXCEPT == POLLPRI);

int descriptorOf(VXSocket socket) noexcept
{
    return static_cast<int>(socket);
}

/// The result of a system call that returns -1 if it fails.
std::int32_t resultOf(int outcome) noexcept
{
    return outcome < 0 ? VXNativeSocketError(errno) : 0;
}

/// Moves a new descriptor away from 0, the number for a closed socket.
std::int32_t storeSocket(int made, VXSocket* socket) noexcept
{
    Descriptor descriptor(made);
    if (made == 0) {
        if (const int error = descriptor.moveAboveStandardStreams(); error != 0)
            errno = error;
    }
    const std::int32_t result = resultOf(descriptor.get());
    *socket = static_cast<VXSocket>(descriptor.release());
    return result;
}

/// One transfer of bytes. `transfer` returns their number, or -1 with `errno`.
std::int32_t countOf(ssize_t done, std::int32_t* count) noexcept
{
    *count = static_cast<std::int32_t>(done);
    return done < 0 ? VXNativeSocketError(errno) : 0;
}

/// EPIPE does not tell which side has ended the connection, or that there was none.
int reasonOfBrokenPipe(int socket) noexcept
{
    union {
        sockaddr generic;
        sockaddr_in in4;
        sockaddr_in6 in6;
        sockaddr_storage room;
    } address {};
    socklen_t length = sizeof address;
    if (::getpeername(socket, &address.generic, &length) == 0)
        return ESHUTDOWN;
    int isListening = 0;
    length = sizeof isListening;
    if (::getsockopt(socket, SOL_SOCKET, SO_ACCEPTCONN, &isListening, &length) == 0 && isListening != 0)
        return ENOTCONN;
    length = sizeof address;
    const bool isBound = ::getsockname(socket, &address.generic, &length) == 0 && address.in4.sin_port != 0;
    return isBound ? ECONNRESET : ENOTCONN; // both families have the port at the same place
}

std::size_t atMost(std::uint32_t length) noexcept
{
    return std::min<std::size_t>(length, INT32_MAX);
}

/// Converts what `poll` reports to what the caller wanted.
std::int16_t readyFor(const VXSocketWait& entry) noexcept
{
    const int found = entry.ready;
    const int asRead = (found & (POLLIN | POLLHUP | POLLERR)) != 0 ? VX_SOCKET_READ : 0;
    const int asWrite = (found & (POLLOUT | POLLERR)) != 0 ? VX_SOCKET_WRITE : 0;
    const int asExcept = (found & (POLLPRI | POLLERR)) != 0 ? VX_SOCKET_EXCEPT : 0;
    return static_cast<std::int16_t>((asRead | asWrite | asExcept) & entry.wanted);
}

/// The number of ready entries, or -1 with `errno`.
std::int32_t waitUntil(std::span<VXSocketWait> entries, const Deadline& deadline) noexcept
{
    if (std::ranges::any_of(entries, [](const VXSocketWait& entry) { return entry.socket < 0; })) {
        errno = EBADF; // `poll` would ignore it
        return -1;
    }
    for (;;) {
        const timespec left = deadline.isNever() ? timespec {} : deadline.left();
        if (const int found = ::ppoll(reinterpret_cast<pollfd*>(entries.data()), entries.size(),
                deadline.isNever() ? nullptr : &left, nullptr);
            found <= 0)
            return found;
        std::int32_t ready = 0;
        for (VXSocketWait& entry : entries) {
            if ((entry.ready & POLLNVAL) != 0) {
                errno = EBADF;
                return -1;
            }
            const bool isFound = entry.ready != 0;
            entry.ready = readyFor(entry);
            if (entry.ready != 0)
                ++ready;
            else if (isFound)
                entry.socket = -1; // `poll` reports a hang-up even if the entry does not want it
        }
        if (ready > 0)
            return ready;
    }
}

} // namespace

std::int32_t VXSocketOpen(int family, int type, int protocol, VXSocket* socket) noexcept
{
    return storeSocket(::socket(family, type | SOCK_CLOEXEC, protocol), socket);
}

std::int32_t VXSocketAccept(VXSocket listener, sockaddr* peer, std::uint32_t* length, VXSocket* socket) noexcept
{
    return storeSocket(
        retryOnSignal([&] { return ::accept4(descriptorOf(listener), peer, length, SOCK_CLOEXEC); }), socket);
}

std::int32_t VXSocketConnect(VXSocket socket, const sockaddr* address, std::uint32_t length) noexcept
{
    return resultOf(::connect(descriptorOf(socket), address, length));
}

std::int32_t VXSocketFinishConnect(VXSocket socket, std::uint32_t milliseconds) noexcept
{
    const std::int32_t result = VXSocketWaitReady(socket, VX_SOCKET_WRITE, milliseconds);
    return result == 0 ? VXSocketTakeError(socket) : result;
}

std::int32_t VXSocketTimedConnect(
    VXSocket socket, const sockaddr* address, std::uint32_t length, std::uint32_t milliseconds) noexcept
{
    const Deadline deadline = Deadline::in(milliseconds);
    const int descriptor = descriptorOf(socket);
    const auto setFlags = [&](int flags) { return retryOnSignal([&] { return ::fcntl(descriptor, F_SETFL, flags); }); };
    // Without a limit, the mode of the socket does not matter.
    const int flags = deadline.isNever() ? O_NONBLOCK : retryOnSignal([&] { return ::fcntl(descriptor, F_GETFL); });
    const bool isBlocking = (flags & O_NONBLOCK) == 0;
    if (flags == -1 || (isBlocking && setFlags(flags | O_NONBLOCK) == -1))
        return resultOf(-1);
    const int error = ::connect(descriptor, address, length) == 0 ? 0 : errno;
    if (isBlocking && setFlags(flags) == -1)
        return resultOf(-1);
    if (error == EINPROGRESS || error == EALREADY || error == EINTR)
        return VXSocketFinishConnect(socket, deadline.millisecondsLeft());
    errno = error;
    return VXNativeSocketError(error);
}

std::int32_t VXSocketBind(VXSocket socket, const sockaddr* address, std::uint32_t length) noexcept
{
    return resultOf(::bind(descriptorOf(socket), address, length));
}

std::int32_t VXSocketListen(VXSocket socket, int backlog) noexcept
{
    return resultOf(::listen(descriptorOf(socket), backlog));
}

std::int32_t VXSocketGetAddress(VXSocket socket, sockaddr* address, std::uint32_t* length) noexcept
{
    return resultOf(::getsockname(descriptorOf(socket), address, length));
}

std::int32_t VXSocketGetOption(VXSocket socket, int level, int name, void* value, std::uint32_t* length) noexcept
{
    return resultOf(::getsockopt(descriptorOf(socket), level, name, value, length));
}

std::int32_t VXSocketSetOption(VXSocket socket, int level, int name, const void* value, std::uint32_t length) noexcept
{
    return resultOf(::setsockopt(descriptorOf(socket), level, name, value, length));
}

std::int32_t VXSocketTakeError(VXSocket socket) noexcept
{
    int error = 0;
    std::uint32_t length = sizeof error;
    if (const std::int32_t result = VXSocketGetOption(socket, SOL_SOCKET, SO_ERROR, &error, &length); result != 0)
        return result;
    errno = error;
    return VXNativeSocketError(error);
}

std::int32_t VXSocketShutdown(VXSocket socket, int how) noexcept
{
    return resultOf(::shutdown(descriptorOf(socket), how));
}

std::int32_t VXSocketClose(VXSocket socket) noexcept
{
    const int outcome = ::close(descriptorOf(socket));
    return outcome < 0 && errno == EINTR ? 0 : resultOf(outcome);
}

std::int32_t VXSocketReceive(
    VXSocket socket, void* target, std::uint32_t length, int flags, std::int32_t* count) noexcept
{
    errno = 0; // no successful call sets it
    return countOf(::recv(descriptorOf(socket), target, atMost(length), flags), count);
}

std::int32_t VXSocketSend(
    VXSocket socket, const void* source, std::uint32_t length, int flags, std::int32_t* count) noexcept
{
    errno = 0;
    const ssize_t sent = ::send(descriptorOf(socket), source, atMost(length), flags | MSG_NOSIGNAL);
    if (sent < 0 && errno == EPIPE)
        errno = reasonOfBrokenPipe(descriptorOf(socket));
    return countOf(sent, count);
}

std::int32_t VXSocketSelect(
    VXSocketWait* entries, std::uint32_t size, const timeval* timeout, std::int32_t* count) noexcept
{
    *count = -1;
    if (timeout != nullptr && (timeout->tv_sec < 0 || timeout->tv_usec < 0)) {
        errno = EINVAL;
        return resultOf(-1);
    }
    *count = waitUntil({entries, size}, timeout != nullptr ? Deadline::in(*timeout) : Deadline());
    return resultOf(*count);
}

std::int32_t VXSocketWaitReady(VXSocket socket, std::int16_t wanted, std::uint32_t milliseconds) noexcept
{
    const Deadline deadline = Deadline::in(milliseconds);
    const std::int32_t ready = retryOnSignal([&] {
        VXSocketWait entry {descriptorOf(socket), wanted, 0};
        return waitUntil({&entry, 1}, deadline);
    });
    if (ready == 0)
        errno = ETIMEDOUT;
    return ready > 0 ? 0 : VXNativeSocketError(errno);
}
