#pragma once

#include "vx/Object.h"

namespace vx::net {

/// The one owner of a native socket, which it closes when the last of those who share it lets go.
class VX_API TcpSocketHandle : public Object {
public:
    explicit TcpSocketHandle(unsigned int socket) noexcept
        : m_socket(socket)
    {
    }
    TcpSocketHandle(const TcpSocketHandle&) = delete;
    TcpSocketHandle& operator=(const TcpSocketHandle&) = delete;
    ~TcpSocketHandle() noexcept override;

    unsigned int getSocket() const noexcept { return m_socket; }

private:
    const unsigned int m_socket;
};

} // namespace vx::net
