#pragma once

#include "vxsys/Api.h"

#include <cstdint>

struct sockaddr;
struct timeval;

/// Sockets. Families, types, options and flags are the system's own. Unless it says otherwise, each call returns 0 or the
/// number that its error has in Windows Sockets (see `VXNativeSocketError`), and after a failure `errno` keeps the error.
/// A signal that interrupts a call is the error `VX_SOCKET_INTERRUPTED`.
extern "C" {

/// A descriptor of the system, closed on `exec` and never 0.
using VXSocket = std::uint32_t;

inline constexpr VXSocket VX_SOCKET_INVALID = 0xFFFFFFFF;

inline constexpr std::int32_t VX_SOCKET_INTERRUPTED = 10004;
inline constexpr std::int32_t VX_SOCKET_WOULD_BLOCK = 10035;
inline constexpr std::int32_t VX_SOCKET_IN_PROGRESS = 10036;
inline constexpr std::int32_t VX_SOCKET_TIMED_OUT = 10060;

/// `*socket` is `VX_SOCKET_INVALID` after a failure.
VXSYS_API std::int32_t VXSocketOpen(int family, int type, int protocol, VXSocket* socket) noexcept;
/// Takes the next connection of `listener`, and starts again after a signal. `*length` is the size of `peer` and becomes
/// the length of its address. After a failure `*socket` is `VX_SOCKET_INVALID`.
VXSYS_API std::int32_t VXSocketAccept(
    VXSocket listener, sockaddr* peer, std::uint32_t* length, VXSocket* socket) noexcept;
/// A signal interrupts the call, but not the attempt to connect: `VXSocketFinishConnect` waits for its end.
VXSYS_API std::int32_t VXSocketConnect(VXSocket socket, const sockaddr* address, std::uint32_t length) noexcept;
VXSYS_API std::int32_t VXSocketFinishConnect(VXSocket socket, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXSocketBind(VXSocket socket, const sockaddr* address, std::uint32_t length) noexcept;
VXSYS_API std::int32_t VXSocketListen(VXSocket socket, int backlog) noexcept;
/// The address that the socket is bound to. `*length` as in `VXSocketAccept`.
VXSYS_API std::int32_t VXSocketGetAddress(VXSocket socket, sockaddr* address, std::uint32_t* length) noexcept;
VXSYS_API std::int32_t VXSocketGetOption(
    VXSocket socket, int level, int name, void* value, std::uint32_t* length) noexcept;
VXSYS_API std::int32_t VXSocketSetOption(
    VXSocket socket, int level, int name, const void* value, std::uint32_t length) noexcept;
/// The error that is pending in a socket, 0 for none. It is pending no more.
VXSYS_API std::int32_t VXSocketTakeError(VXSocket socket) noexcept;
/// `how` is the system's number for one direction or both.
VXSYS_API std::int32_t VXSocketShutdown(VXSocket socket, int how) noexcept;
/// A signal does not make it fail.
VXSYS_API std::int32_t VXSocketClose(VXSocket socket) noexcept;

/// `*count` is the number of bytes: 0 after the peer's orderly end, -1 after a failure. At most 2^31 - 1 are asked for.
/// `errno` is 0 unless the call fails.
VXSYS_API std::int32_t VXSocketReceive(
    VXSocket socket, void* target, std::uint32_t length, int flags, std::int32_t* count) noexcept;
/// As above. A peer that has closed is an error, never a signal.
VXSYS_API std::int32_t VXSocketSend(
    VXSocket socket, const void* source, std::uint32_t length, int flags, std::int32_t* count) noexcept;

/// What to wait for. A socket that has failed is ready for each: its error can be read, a write would meet it, and it is
/// the exception that a connect ends with.
inline constexpr std::int16_t VX_SOCKET_READ = 0x1;
inline constexpr std::int16_t VX_SOCKET_EXCEPT = 0x2;
inline constexpr std::int16_t VX_SOCKET_WRITE = 0x4;

struct VXSocketWait {
    std::int32_t socket;
    std::int16_t wanted; ///< `VX_SOCKET_...` together
    std::int16_t ready; ///< those of the wanted ones that hold
};

/// Waits until a socket is ready, as `select` does but for descriptors of any number. A null `timeout` has no limit, a zero
/// one only looks. `*count` is the number of entries that are ready, 0 after the time, -1 after a failure. A negative time
/// and a descriptor that is not open are failures. An entry whose peer has hung up without being ready for what is wanted
/// loses its descriptor.
VXSYS_API std::int32_t VXSocketSelect(
    VXSocketWait* entries, std::uint32_t size, const timeval* timeout, std::int32_t* count) noexcept;
/// Waits until one socket is ready for `wanted`; signals do not shorten it. `VX_SOCKET_TIMED_OUT` after the time.
VXSYS_API std::int32_t VXSocketWaitReady(VXSocket socket, std::int16_t wanted, std::uint32_t milliseconds) noexcept;
}
