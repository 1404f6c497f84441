#pragma once

#include "vx/Reference.h"
#include "vx/io/InputStream.h"
#include "vx/io/OutputStream.h"
#include "vx/net/TcpSocketHandle.h"

#include <atomic>
#include <cstdint>

namespace vx::net {

/// Reads from a socket. `close` leaves the socket open.
class VX_API TcpSocketInputStream : public io::InputStream {
public:
    /// Keeps a reference on `handle`: the socket lives as long as its streams.
    explicit TcpSocketInputStream(TcpSocketHandle* handle);
    ~TcpSocketInputStream() noexcept override;

    using InputStream::read;
    /// Receives once: what has arrived, or -1 if the peer has closed. Throws io::TimeoutException, after which another
    /// read may be tried, or IoException.
    std::int32_t read(signed char* buffer, std::int32_t length) override;

    /// Milliseconds for one read, even if signals arrive during it. 0 and less means without a limit.
    void setTimeout(int milliseconds) noexcept { m_timeout = milliseconds; }

private:
    Reference<TcpSocketHandle> m_handle;
    const unsigned int m_socket;
    std::atomic<int> m_timeout {0};
};

/// Writes to a socket. `close` leaves the socket open.
class VX_API TcpSocketOutputStream : public io::OutputStream {
public:
    /// Keeps a reference on `handle`: the socket lives as long as its streams.
    explicit TcpSocketOutputStream(TcpSocketHandle* handle);
    ~TcpSocketOutputStream() noexcept override;

    using OutputStream::write;
    /// Returns when the system has accepted all bytes, even if signals arrive during the call. Throws IoException; how
    /// much was sent before the failure is not known.
    void write(const signed char* buffer, std::int32_t length) override;

    /// Milliseconds that a write waits until the peer takes more bytes, before it throws io::TimeoutException. 0 and less
    /// means without a limit.
    void setTimeout(int milliseconds) noexcept { m_timeout = milliseconds; }

private:
    Reference<TcpSocketHandle> m_handle;
    const unsigned int m_socket;
    std::atomic<int> m_timeout {0};
};

} // namespace vx::net
