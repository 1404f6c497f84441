#pragma once

#include "vx/Api.h"
#include "vx/net/SocketAddress.h"
#include "vx/net/SocketResult.h"

#include <atomic>
#include <cstdint>

struct addrinfo;

namespace vx::net {

/// Base of the sockets that return results and never throw. Null arguments are VX_E_SOCKET_EINVAL, operations on a
/// closed socket VX_E_SOCKET_ENOTSOCK. Calls are not repeated, and no time-out or socket option is set, unless the
/// caller does so; a signal that interrupts a call is VX_E_SOCKET_EINTR. There is no reference count and no lock: one
/// thread at a time, except that `init` and `uninit` may be called from any thread.
class VX_API TcpSocket2 {
public:
    TcpSocket2(const TcpSocket2&) = delete;
    TcpSocket2& operator=(const TcpSocket2&) = delete;
    virtual ~TcpSocket2();

    /// The native socket, 0 after `close`.
    virtual unsigned int getId() = 0;
    /// The shutdowns succeed on a socket that is not connected, and may be repeated. After `close` they change only the
    /// flags.
    virtual ENUM_VX_E_SOCKET shutdownInput() = 0;
    virtual ENUM_VX_E_SOCKET shutdownOutput() = 0;
    virtual ENUM_VX_E_SOCKET shutdownBoth() = 0;
    /// The socket is closed even if the result is a failure. May be repeated.
    virtual ENUM_VX_E_SOCKET close() = 0;
    virtual short getShutdownIn() const;
    virtual short getShutdownOut() const;
    virtual short getClosed() const;

protected:
    virtual void setShutdownIn(short isShutdown);
    virtual void setShutdownOut(short isShutdown);
    virtual void setClosed(short isClosed);

public:
    /// Starts the sockets layer once. Every address and socket calls it first.
    static ENUM_VX_E_SOCKET init();
    /// Stops the sockets layer for all callers. The library does so when it stops.
    static ENUM_VX_E_SOCKET uninit();
    /// The version of the sockets interface.
    static ENUM_VX_E_SOCKET getVersion(std::int32_t* major, std::int32_t* minor);
    /// Looks `host` up and copies result `index` with `port` (host order, not 0). VX_E_SOCKET_EADDRNOTAVAIL if there
    /// are fewer results. `hints` may be null.
    static ENUM_VX_E_SOCKET getAddrInfo(
        const char* host, unsigned short port, addrinfo* hints, std::uint32_t index, vx_sockaddr_union* result);
    /// Shuts the output down, closes and deletes the socket, and sets the pointer to null. It may be null already.
    static ENUM_VX_E_SOCKET destroyTcpSocket2(TcpSocket2** socket);

protected:
    explicit TcpSocket2(ENUM_VX_E_SOCKET* status);

    /// The direction of a shutdown.
    enum class Direction { INPUT, OUTPUT, BOTH };
    /// Sets the flags for a shutdown of `direction`. Returns the argument for the system's `shutdown`, or -1 if it was
    /// done before.
    int beginShutdown(Direction direction);

    static std::atomic<short> s_bInitialized;
    static std::atomic<std::int32_t> s_VersionMajor;
    static std::atomic<std::int32_t> s_VersionMinor;

private:
    short m_isShutdownIn = 0;
    short m_isShutdownOut = 0;
    short m_isClosed = 0;
};

} // namespace vx::net
