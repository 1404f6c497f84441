#pragma once

#include "vx/Api.h"
#include "vx/net/SocketAddress.h"
#include "vx/net/SocketResult.h"

#include <atomic>
#include <cstdint>

struct addrinfo;

namespace vx::net {

/// Root of the sockets that give results and never throw. Null arguments are VX_E_SOCKET_EINVAL, operations on a closed
/// socket VX_E_SOCKET_ENOTSOCK. No call is repeated, and no time-out or socket option set, by itself; a signal that breaks
/// a call off is VX_E_SOCKET_EINTR. Not counted and not locked: one thread at a time, but `init` and `uninit` are safe
/// between threads.
class VX_API TcpSocket2 {
public:
    TcpSocket2(const TcpSocket2&) = delete;
    TcpSocket2& operator=(const TcpSocket2&) = delete;
    virtual ~TcpSocket2();

    /// The native socket, 0 once closed.
    virtual unsigned int getId() = 0;
    /// The shutdowns succeed on a socket that is not connected, and repeat harmlessly. Behind `close` they change the flags
    /// alone.
    virtual ENUM_VX_E_SOCKET shutdownInput() = 0;
    virtual ENUM_VX_E_SOCKET shutdownOutput() = 0;
    virtual ENUM_VX_E_SOCKET shutdownBoth() = 0;
    /// The socket is closed also after a failure. Repeats harmlessly.
    virtual ENUM_VX_E_SOCKET close() = 0;
    virtual short getShutdownIn() const;
    virtual short getShutdownOut() const;
    virtual short getClosed() const;

protected:
    virtual void setShutdownIn(short isShutdown);
    virtual void setShutdownOut(short isShutdown);
    virtual void setClosed(short isClosed);

public:
    /// Makes the sockets layer ready, once; every address and socket begins with it.
    static ENUM_VX_E_SOCKET init();
    /// Takes that back for everybody. The library's stop does it.
    static ENUM_VX_E_SOCKET uninit();
    /// The version of the sockets interface.
    static ENUM_VX_E_SOCKET getVersion(std::int32_t* major, std::int32_t* minor);
    /// Looks `host` up and copies entry `index` of the list that comes back, with `port` (host order, not 0).
    /// VX_E_SOCKET_EADDRNOTAVAIL where the list is shorter. `hints` may be null.
    static ENUM_VX_E_SOCKET getAddrInfo(
        const char* host, unsigned short port, addrinfo* hints, std::uint32_t index, vx_sockaddr_union* result);
    /// Shuts the output down, closes and deletes the socket, and nulls the pointer, which may hold null.
    static ENUM_VX_E_SOCKET destroyTcpSocket2(TcpSocket2** socket);

protected:
    explicit TcpSocket2(ENUM_VX_E_SOCKET* status);

    /// What a shutdown in one direction has to ask the system for, the other direction being shut down or not.
    enum class Direction { INPUT, OUTPUT, BOTH };
    /// The argument of the system's `shutdown` for a step to `direction`, or -1 where the flags say that it is done. Sets
    /// the flags.
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
