#pragma once

#include "vxsys/Api.h"

#include <cstdint>

struct sockaddr;
struct timeval;

/// Sockets. Families, types, options and flags are those of the system. Unless a comment says otherwise, each call
/// returns 0 or the Windows Sockets number of the error (see `VXNativeSocketError`), and `errno` has the error after a
/// failure. A signal that interrupts a call is the error `VX_SOCKET_INTERRUPTED`.
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
/// Accepts the next connection of `listener`, and continues after a signal. `*length` is the size of `peer` and becomes
/// the length of its address. After a failure `*socket` is `VX_SOCKET_INVALID`.
VXSYS_API std::int32_t VXSocketAccept(
    VXSocket listener, sockaddr* peer, std::uint32_t* length, VXSocket* socket) noexcept;
/// A signal interrupts this call, but the attempt to connect continues: `VXSocketFinishConnect` waits for its end.
VXSYS_API std::int32_t VXSocketConnect(VXSocket socket, const sockaddr* address, std::uint32_t length) noexcept;
VXSYS_API std::int32_t VXSocketFinishConnect(VXSocket socket, std::uint32_t milliseconds) noexcept;
/// Connects within `milliseconds` (`VX_WAIT_FOREVER`: as long as the system tries), also if signals arrive and if the
/// socket does not block. `VX_SOCKET_TIMED_OUT` after the time: the attempt then continues, and another call waits for
/// it again.
VXSYS_API std::int32_t VXSocketTimedConnect(
    VXSocket socket, const sockaddr* address, std::uint32_t length, std::uint32_t milliseconds) noexcept;
VXSYS_API std::int32_t VXSocketBind(VXSocket socket, const sockaddr* address, std::uint32_t length) noexcept;
VXSYS_API std::int32_t VXSocketListen(VXSocket socket, int backlog) noexcept;
/// The address to which the socket is bound. `*length` as in `VXSocketAccept`.
VXSYS_API std::int32_t VXSocketGetAddress(VXSocket socket, sockaddr* address, std::uint32_t* length) noexcept;
VXSYS_API std::int32_t VXSocketGetOption(
    VXSocket socket, int level, int name, void* value, std::uint32_t* length) noexcept;
VXSYS_API std::int32_t VXSocketSetOption(
    VXSocket socket, int level, int name, const void* value, std::uint32_t length) noexcept;
/// Returns the pending error of a socket, 0 for none, and clears it.
VXSYS_API std::int32_t VXSocketTakeError(VXSocket socket) noexcept;
/// `how` is the argument of the system's `shutdown`.
VXSYS_API std::int32_t VXSocketShutdown(VXSocket socket, int how) noexcept;
/// A signal is not a failure.
VXSYS_API std::int32_t VXSocketClose(VXSocket socket) noexcept;

/// Receives at most 2^31 - 1 bytes. `*count` is their number: 0 if the peer has closed, -1 after a failure. `errno` is
/// 0 unless the call fails.
VXSYS_API std::int32_t VXSocketReceive(
    VXSocket socket, void* target, std::uint32_t length, int flags, std::int32_t* count) noexcept;
/// As above. Without a connection, the call fails without a signal: with the number of ESHUTDOWN if this side has shut
/// down the direction, of ECONNRESET if the peer has closed, of ENOTCONN if there was no connection.
VXSYS_API std::int32_t VXSocketSend(
    VXSocket socket, const void* source, std::uint32_t length, int flags, std::int32_t* count) noexcept;

/// What to wait for. A socket with a pending error is ready for all three: its error can be read, a write would return
/// it, and for a connect it is the exception.
inline constexpr std::int16_t VX_SOCKET_READ = 0x1;
inline constexpr std::int16_t VX_SOCKET_EXCEPT = 0x2;
inline constexpr std::int16_t VX_SOCKET_WRITE = 0x4;

struct VXSocketWait {
    std::int32_t socket;
    std::int16_t wanted; ///< a sum of `VX_SOCKET_...`
    std::int16_t ready; ///< those of `wanted` for which the socket is ready
};

/// Waits until a socket is ready, as `select` does, but for descriptors of any number. A null `timeout` has no limit;
/// with a time of zero it returns at once. `*count` is the number of ready entries: 0 after the time-out, -1 after a
/// failure. A negative time and a descriptor that is not open are failures. If the peer of an entry has hung up, and
/// the entry is not ready for what is wanted, its descriptor is set to -1.
VXSYS_API std::int32_t VXSocketSelect(
    VXSocketWait* entries, std::uint32_t size, const timeval* timeout, std::int32_t* count) noexcept;
/// Waits until one socket is ready for `wanted`, also if signals arrive. `VX_SOCKET_TIMED_OUT` after the time.
VXSYS_API std::int32_t VXSocketWaitReady(VXSocket socket, std::int16_t wanted, std::uint32_t milliseconds) noexcept;
}
