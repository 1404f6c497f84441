#pragma once

#include "vx/Reference.h"
#include "vx/io/InputStream.h"
#include "vx/io/OutputStream.h"
#include "vx/net/TcpSocketHandle.h"

#include <atomic>
#include <cstdint>

namespace vx::net {

/// What comes from a socket. `close` leaves it open.
class VX_API TcpSocketInputStream : public io::InputStream {
public:
    /// `handle` is counted: the socket lives as long as its streams.
    explicit TcpSocketInputStream(TcpSocketHandle* handle);
    ~TcpSocketInputStream() noexcept override;

    using InputStream::read;
    /// One receive: what there is, -1 when the peer has closed. Throws io::TimeoutException, behind which the next read
    /// waits anew, or IoException.
    std::int32_t read(signed char* buffer, std::int32_t length) override;

    /// Milliseconds for one read, whatever signals arrive meanwhile; 0 and less is for ever.
    void setTimeout(int milliseconds) noexcept { m_timeout = milliseconds; }

private:
    Reference<TcpSocketHandle> m_handle;
    const unsigned int m_socket;
    std::atomic<int> m_timeout {0};
};

/// What goes to a socket. `close` leaves it open.
class VX_API TcpSocketOutputStream : public io::OutputStream {
public:
    /// `handle` is counted: the socket lives as long as its streams.
    explicit TcpSocketOutputStream(TcpSocketHandle* handle);
    ~TcpSocketOutputStream() noexcept override;

    using OutputStream::write;
    /// Returns when the system has taken all of it, also if signals arrive meanwhile. Throws IoException; how much was
    /// sent before the failure is not known.
    void write(const signed char* buffer, std::int32_t length) override;

private:
    Reference<TcpSocketHandle> m_handle;
    const unsigned int m_socket;
};

} // namespace vx::net
