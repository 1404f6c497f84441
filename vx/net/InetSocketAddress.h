#pragma once

#include "vx/net/InetAddress.h"

#include <memory>

namespace vx::net {

/// An IP address with a port. The port of this object and that of its address are separate; at first they are equal.
/// Only `getDiagnosticStr` throws. One thread at a time.
class VX_API InetSocketAddress {
public:
    /// If the address cannot be used, the object has none, and `*status` tells why. A null `status` is a failure too.
    InetSocketAddress(const vx_sockaddr_union* address, ENUM_VX_E_SOCKET* status);
    /// From one result of a name look-up, with `port` in host order.
    InetSocketAddress(const addrinfo* info, unsigned short port, ENUM_VX_E_SOCKET* status);
    InetSocketAddress(const InetSocketAddress&) = delete;
    InetSocketAddress& operator=(const InetSocketAddress&) = delete;
    virtual ~InetSocketAddress();

    /// Owned by this object; null if it has none.
    InetAddress* getAddress() const { return m_address.get(); }
    /// VX_E_SOCKET_EFAULT, here and below, if this object has no address.
    ENUM_VX_E_SOCKET getFamily(unsigned short* family) const;
    ENUM_VX_E_SOCKET getPortHostOrder(unsigned short* port) const;
    /// The port of the address does not change.
    ENUM_VX_E_SOCKET setPortHostOrder(unsigned short port);
    /// Appends the numeric text of the address.
    ENUM_VX_E_SOCKET getAddressStr(String& text) const;
    /// Appends "192.0.2.1:80" or "[::1]:80". Throws if memory is exhausted, since it returns no result.
    void getDiagnosticStr(String& text) const;

    /// The port of a TCP service; 0 with success for an empty name, 0 with a failure for an unknown one.
    static ENUM_VX_E_SOCKET getPortHostOrderFromTcpServiceName(const char* service, unsigned short* port);

private:
    std::unique_ptr<InetAddress> m_address;
    unsigned short m_port = 0;
};

} // namespace vx::net
