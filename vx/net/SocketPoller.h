#pragma once

#include "vx/Api.h"
#include "vx/net/SocketResult.h"
#include "vxsys/Poller.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace vx::net {

/// Waits for any number of sockets. The set is kept from one wait to the next, and a wait costs only what is ready. It never
/// throws. One thread at a time, except that any thread may call `wake`.
///
/// The sockets are not owned: remove a socket before it is closed.
class VX_API SocketPoller {
public:
    /// What to wait for, added up, and what is ready.
    static constexpr std::uint32_t READ
        = VX_POLL_READ; ///< also the orderly end of a connection, and a connection to accept
    static constexpr std::uint32_t WRITE = VX_POLL_WRITE; ///< also the end of a connect
    static constexpr std::uint32_t URGENT = VX_POLL_URGENT; ///< data out of band
    /// Reported without being asked for: the socket has failed, or both directions are closed.
    static constexpr std::uint32_t FAILED = VX_POLL_FAILED;

    /// `id` is what the caller gave with the socket; `ready` is a sum of the values above.
    using Event = VXPollerEvent;

    explicit SocketPoller(ENUM_VX_E_SOCKET* status);
    SocketPoller(const SocketPoller&) = delete;
    SocketPoller& operator=(const SocketPoller&) = delete;
    /// No thread may wait.
    ~SocketPoller();

    /// `socket` as `TcpSocket2::getId` gives it. An `interest` of 0 waits for `FAILED` only. The `id` is any number but
    /// UINT64_MAX, the address of an object, say. VX_E_SOCKET_EINVAL for a socket that is in the set already, and
    /// VX_E_SOCKET_ENOTSOCK for a closed one.
    ENUM_VX_E_SOCKET add(unsigned int socket, std::uint32_t interest, std::uint64_t id);
    /// Another interest and id for a socket of the set. VX_E_SOCKET_EINVAL if it is not in it.
    ENUM_VX_E_SOCKET change(unsigned int socket, std::uint32_t interest, std::uint64_t id);
    ENUM_VX_E_SOCKET remove(unsigned int socket);

    /// Fills the beginning of `events` and stores how many in `*count`; what does not fit is told by the next waits. The
    /// count is 0 when `milliseconds` ran out (0 only looks, 0xFFFFFFFF waits for ever) and after `wake`. A signal is
    /// VX_E_SOCKET_EINTR.
    ENUM_VX_E_SOCKET wait(std::span<Event> events, std::uint32_t milliseconds, std::size_t* count);
    /// Ends the wait under way, or else the next one. Several calls before that wait are one.
    ENUM_VX_E_SOCKET wake();

private:
    VXPollerHandle m_handle = nullptr;
};

} // namespace vx::net
