#pragma once

#include "vx/net/InetAddress.h"

#include <memory>

namespace vx::net {

/// An IP address with a port. The port here and that inside the held address are apart: both begin as the same. Nothing
/// throws but `getDiagnosticStr`; one thread at a time.
class VX_API InetSocketAddress {
public:
    /// Without a usable address the object holds none and `*status` says why. A null `status` is a failure too.
    InetSocketAddress(const vx_sockaddr_union* address, ENUM_VX_E_SOCKET* status);
    /// From one entry of a look-up, with `port` in host order.
    InetSocketAddress(const addrinfo* info, unsigned short port, ENUM_VX_E_SOCKET* status);
    InetSocketAddress(const InetSocketAddress&) = delete;
    InetSocketAddress& operator=(const InetSocketAddress&) = delete;
    virtual ~InetSocketAddress();

    /// Stays with this object; null where it holds none.
    InetAddress* getAddress() const { return m_address.get(); }
    /// VX_E_SOCKET_EFAULT, here and below, where no address is held.
    ENUM_VX_E_SOCKET getFamily(unsigned short* family) const;
    ENUM_VX_E_SOCKET getPortHostOrder(unsigned short* port) const;
    /// The held address keeps its own.
    ENUM_VX_E_SOCKET setPortHostOrder(unsigned short port);
    /// Appends the numeric text of the address.
    ENUM_VX_E_SOCKET getAddressStr(String& text) const;
    /// Appends "192.0.2.1:80" or "[::1]:80". A lack of memory is thrown, since there is no result to tell it.
    void getDiagnosticStr(String& text) const;

    /// The port of a TCP service; 0 with success for an empty name, 0 with a failure for one that nobody knows.
    static ENUM_VX_E_SOCKET getPortHostOrderFromTcpServiceName(const char* service, unsigned short* port);

private:
    std::unique_ptr<InetAddress> m_address;
    unsigned short m_port = 0;
};

} // namespace vx::net
