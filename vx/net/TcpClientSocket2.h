#pragma once

#include "vx/net/TcpWorkerSocket2.h"

#include <cstdint>

namespace vx::net {

/// A socket that its owner connects.
class VX_API TcpClientSocket2 : public TcpWorkerSocket2 {
public:
    /// The arguments are those of the system's `socket`. The caller deletes the object, with `destroyTcpSocket2` for
    /// example.
    static ENUM_VX_E_SOCKET createTcpClientSocket2(int domain, int type, int protocol, TcpClientSocket2** out);
    ~TcpClientSocket2() override;

    /// `length` counts the bytes of the address.
    ENUM_VX_E_SOCKET bind(const vx_sockaddr_union* address, unsigned int length);
    /// Waits as long as the system does.
    ENUM_VX_E_SOCKET connect(const vx_sockaddr_union* address, unsigned int length);
    /// Connects within `milliseconds`; `VX_WAIT_FOREVER` waits as long as the system does. Signals do not end the wait.
    /// VX_E_SOCKET_ETIMEDOUT after the time: the attempt then continues until the socket is closed, and another call
    /// waits for it again.
    ENUM_VX_E_SOCKET connectFor(const vx_sockaddr_union* address, unsigned int length, std::uint32_t milliseconds);
    /// `*length` is the size of `address` and becomes the length of the complete address.
    ENUM_VX_E_SOCKET getLocalAddress(vx_sockaddr_union* address, int* length);

private:
    TcpClientSocket2(unsigned int id, ENUM_VX_E_SOCKET* status);
};

} // namespace vx::net
