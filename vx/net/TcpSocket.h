#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/ThreadAnnotations.h"
#include "vx/io/InputStream.h"
#include "vx/io/OutputStream.h"
#include "vx/net/TcpSocketHandle.h"
#include "vx/sync/Mutex.h"

#include <atomic>
#include <cstdint>

namespace vx {
class String;
}

namespace vx::net {

class TcpSocketInputStream;
class TcpSocketOutputStream;

/// A connected socket with a stream in each direction. Failures are exceptions. The native socket is open until this
/// object and its streams are destroyed. One thread may read while another writes.
class VX_API TcpSocket : public Object {
public:
    /// Connects to the first address of `host`. Throws Exception for a host that is unknown or cannot be reached,
    /// IoException if the system has no socket left. A name with a zero unit in it is unknown.
    TcpSocket(const String& host, unsigned short port);
    /// As above, and throws io::TimeoutException if the connection is not there within `milliseconds`. The look-up of a
    /// name is not part of that time.
    TcpSocket(const String& host, unsigned short port, std::uint32_t milliseconds);
    TcpSocket(const TcpSocket&) = delete;
    TcpSocket& operator=(const TcpSocket&) = delete;
    ~TcpSocket() noexcept(false) override;

    /// Returns the same object at each call. Closing it leaves the socket open.
    Reference<io::InputStream> getInputStream();
    Reference<io::OutputStream> getOutputStream();
    /// How long a read waits for the first byte before it throws io::TimeoutException; 0, the default, means without a
    /// limit.
    void setSoTimeout(int milliseconds);
    /// How long a write waits until the peer takes more bytes before it throws io::TimeoutException; 0, the default, means
    /// without a limit.
    void setWriteTimeout(int milliseconds);
    /// "vx.net.tcp.socket=" and the native socket: how the socket is named to a process that inherits it.
    String getInheritanceId();

protected:
    /// Takes over a connected native socket.
    explicit TcpSocket(unsigned int socket);

    /// Start and stop the sockets layer. Both throw Exception.
    static void init();
    static void uninit();
    static bool getInitialized();
    static void close(unsigned int socket) noexcept;

private:
    friend class TcpConnection;
    friend class TcpServerSocket;

    explicit TcpSocket(Reference<TcpSocketHandle> handle);
    TcpSocketInputStream& inputStream();
    TcpSocketOutputStream& outputStream();

    static std::atomic<bool> s_bInitialized;

    Reference<TcpSocketInputStream> m_input VX_GUARDED_BY(m_lock);
    Reference<TcpSocketOutputStream> m_output VX_GUARDED_BY(m_lock);
    Reference<TcpSocketHandle> m_handle;
    sync::Mutex m_lock;
};

} // namespace vx::net
