#pragma once

#include "vx/net/InetSocketAddress.h"
#include "vx/net/TcpSocket2.h"

#include <cstddef>
#include <memory>

struct timeval;

namespace vx::net {

/// A connected socket.
class VX_API TcpWorkerSocket2 : public TcpSocket2 {
public:
    /// Takes over the native socket `id`.
    TcpWorkerSocket2(unsigned int id, ENUM_VX_E_SOCKET* status);
    /// As above with the address of the peer.
    TcpWorkerSocket2(unsigned int id, const vx_sockaddr_union* peer, ENUM_VX_E_SOCKET* status);
    /// Shuts the output down and closes the socket, unless that was done before.
    ~TcpWorkerSocket2() override;

    // TcpSocket2
    unsigned int getId() override;
    ENUM_VX_E_SOCKET shutdownInput() override;
    ENUM_VX_E_SOCKET shutdownOutput() override;
    ENUM_VX_E_SOCKET shutdownBoth() override;
    ENUM_VX_E_SOCKET close() override;

    virtual ENUM_VX_E_SOCKET getsockopt(std::int32_t level, std::int32_t name, char* value, int* length);
    /// One receive of up to `length` bytes. `*count` is the number of bytes received: 0 with success if the peer has
    /// closed, -1 after a failure.
    virtual ENUM_VX_E_SOCKET recv(char* buffer, unsigned int length, std::int32_t flags, std::int32_t* count);
    /// One send. `*count` may be less than `length`, and is -1 after a failure. A closed peer never raises a signal.
    virtual ENUM_VX_E_SOCKET send(char* buffer, unsigned int length, std::int32_t flags, std::int32_t* count);
    virtual ENUM_VX_E_SOCKET setsockopt(std::int32_t level, std::int32_t name, const char* value, int length);

    /// `send` does not change the buffer.
    ENUM_VX_E_SOCKET send(const char* buffer, unsigned int length, std::int32_t flags, std::int32_t* count)
    {
        return send(const_cast<char*>(buffer), length, flags, count);
    }
    ENUM_VX_E_SOCKET send(std::nullptr_t, unsigned int length, std::int32_t flags, std::int32_t* count)
    {
        return send(static_cast<char*>(nullptr), length, flags, count);
    }

    /// The peer's address, owned by this object; null unless the socket comes from `accept`.
    const InetSocketAddress* getPeerAddress() const { return m_peer.get(); }

    /// Waits until a socket can be read, can be written without blocking, or has an exception: urgent data, or a
    /// pending error, which is then the result. Each set has an array, which may be null, and a count of its entries,
    /// at most 63. Descriptors may have any number. A null `timeout` waits without a limit, one of 0 returns at once.
    /// On return each count is the number of ready entries, the other entries of the array are null, and `*ready` is
    /// the sum over the sets. After a time-out all counts are 0 and the arrays unchanged.
    static ENUM_VX_E_SOCKET select(TcpWorkerSocket2** read, std::uint32_t* readCount, TcpWorkerSocket2** write,
        std::uint32_t* writeCount, TcpWorkerSocket2** except, std::uint32_t* exceptCount, const timeval* timeout,
        std::int32_t* ready);

protected:
    /// The native socket, for one call of the system.
    unsigned int getHandle() const { return m_handle; }

private:
    ENUM_VX_E_SOCKET shutDown(Direction direction);

    unsigned int m_handle;
    std::unique_ptr<InetSocketAddress> m_peer;
};

} // namespace vx::net
