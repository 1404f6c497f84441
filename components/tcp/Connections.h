#pragma once

#include <vx/Reference.h>
#include <vx/String.h>
#include <vx/net/SocketResult.h>
#include <vx/net/TcpServerSocket2.h>
#include <vx/net/TcpSocketHandle.h>
#include <vx/util/PropertySet.h>

#include <chrono>
#include <cstdint>
#include <memory>

namespace vx::components {

// What transports over TCP share. Results of sockets are thrown as ResultException.

/// The values of the properties "host", "port" and "timeout". The constructor throws ResultException for an invalid one.
struct TcpSettings {
    explicit TcpSettings(const util::PropertySet& properties);

    String host;
    unsigned short port; ///< 0 if there is none
    int timeout; ///< milliseconds; 0 is no limit
};

/// A property that names a host; `otherwise` without it. Throws ResultException for a name with a zero unit: the system
/// would look up only the text before it.
String hostProperty(const util::PropertySet& properties, const char16_t* key, const String& otherwise);

/// Limits the total time of one call that waits. Without it, the call would start its wait again after each signal.
class Wait {
public:
    /// 0 milliseconds means without a limit.
    explicit Wait(int milliseconds);

    std::uint32_t millisecondsLeft() const;
    /// Waits until `socket` is ready for `wanted`. Throws if that takes too long.
    void until(unsigned int socket, std::int16_t wanted) const;
    /// After the transfer that gave `error`. If a signal interrupted it, waits as `until` does. Throws for another error.
    void goOn(std::int32_t error, unsigned int socket, std::int16_t wanted) const;

private:
    using Clock = std::chrono::steady_clock;

    bool m_hasEnd;
    Clock::time_point m_end;
};

/// Throws a result that is not VX_E_SOCKET_OK.
void checkSocket(ENUM_VX_E_SOCKET result);
/// The result for the number of a socket error; a wait that took too long is one of them.
ENUM_VX_E_SOCKET resultOfSocketError(std::int32_t error);
/// Limits each wait for the peer: for the connection, for room to send, for data to receive.
void limitWaits(const net::TcpSocketHandle& socket, int milliseconds);

/// A connection to the first address of the host that accepts one.
Reference<net::TcpSocketHandle> connectTcp(const TcpSettings& settings);

/// Waits for connections.
class TcpListener {
public:
    /// Chooses a port if the settings have none.
    explicit TcpListener(const TcpSettings& settings);

    unsigned short port() const noexcept { return m_port; }
    Reference<net::TcpSocketHandle> accept();

private:
    ENUM_VX_E_SOCKET listen(const String& host);

    std::unique_ptr<net::TcpServerSocket2> m_server;
    unsigned short m_port;
    const bool m_wantsAnyPort = m_port == 0;
};

/// Tells the caller of `createAcceptor` which port was chosen.
void storePort(const util::PropertySet& properties, unsigned short port);

} // namespace vx::components
