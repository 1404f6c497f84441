#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"

namespace vx::net {

/// The owner of a native socket, which it closes when the last reference to the owner is released.
class VX_API TcpSocketHandle : public Object {
public:
    explicit TcpSocketHandle(unsigned int socket) noexcept
        : m_socket(socket)
    {
    }
    TcpSocketHandle(const TcpSocketHandle&) = delete;
    TcpSocketHandle& operator=(const TcpSocketHandle&) = delete;
    ~TcpSocketHandle() noexcept override;

    /// Creates an owner for `socket`. If memory is exhausted, the socket is closed.
    static Reference<TcpSocketHandle> own(unsigned int socket);

    unsigned int getSocket() const noexcept { return m_socket; }

private:
    const unsigned int m_socket;
};

} // namespace vx::net
