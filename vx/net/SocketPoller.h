#pragma once

#include "vx/Api.h"
#include "vx/net/SocketResult.h"
#include "vxsys/Poller.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace vx::net {

/// Waits for any number of sockets. The set is kept between waits, and the cost of a wait depends only on how many
/// sockets are ready. It never throws. One thread at a time, except that any thread may call `wake`.
///
/// The sockets are not owned: remove a socket before it is closed.
class VX_API SocketPoller {
public:
    /// Their sum says what to wait for, or what is ready.
    static constexpr std::uint32_t READ
        = VX_POLL_READ; ///< also the orderly end of a connection, and a connection to accept
    static constexpr std::uint32_t WRITE = VX_POLL_WRITE; ///< also the end of a connect
    static constexpr std::uint32_t URGENT = VX_POLL_URGENT; ///< data out of band
    /// Always reported: the socket has failed, or both directions are closed.
    static constexpr std::uint32_t FAILED = VX_POLL_FAILED;

    /// `id` is that of the socket; `ready` is a sum of the values above.
    using Event = VXPollerEvent;

    explicit SocketPoller(ENUM_VX_E_SOCKET* status);
    SocketPoller(const SocketPoller&) = delete;
    SocketPoller& operator=(const SocketPoller&) = delete;
    /// No thread may be waiting.
    ~SocketPoller();

    /// Adds `socket`, a number that `TcpSocket2::getId` returned. An `interest` of 0 waits only for `FAILED`. The `id`
    /// may be any number except UINT64_MAX, for example the address of an object. VX_E_SOCKET_EINVAL for a socket that
    /// is already in the set, VX_E_SOCKET_ENOTSOCK for a closed one.
    ENUM_VX_E_SOCKET add(unsigned int socket, std::uint32_t interest, std::uint64_t id);
    /// Changes interest and id of a socket in the set. VX_E_SOCKET_EINVAL if it is not in the set.
    ENUM_VX_E_SOCKET change(unsigned int socket, std::uint32_t interest, std::uint64_t id);
    ENUM_VX_E_SOCKET remove(unsigned int socket);

    /// Stores events at the start of `events`, and their number in `*count`. Events for which there is no room are
    /// reported by the next waits. The number is 0 after `milliseconds` (0 returns at once, 0xFFFFFFFF has no limit)
    /// and after `wake`. VX_E_SOCKET_EINTR if a signal interrupts the wait.
    ENUM_VX_E_SOCKET wait(std::span<Event> events, std::uint32_t milliseconds, std::size_t* count);
    /// Ends the wait of the other thread, or the next wait if none is waiting. Several calls before a wait end only
    /// that one.
    ENUM_VX_E_SOCKET wake();

private:
    VXPollerHandle m_handle = nullptr;
};

} // namespace vx::net
