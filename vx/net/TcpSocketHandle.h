#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"

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

    /// An owner for `socket`, which is closed where there is no memory for one.
    static Reference<TcpSocketHandle> own(unsigned int socket);

    unsigned int getSocket() const noexcept { return m_socket; }

private:
    const unsigned int m_socket;
};

} // namespace vx::net
