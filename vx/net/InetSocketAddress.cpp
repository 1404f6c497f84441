#include "vx/net/InetSocketAddress.h"

#include "vx/String.h"
#include "vx/net/TcpSocket2.h"
#include "vxsys/Net.h"

#include <arpa/inet.h>

namespace vx::net {

namespace {

/// The common start of both constructors. If it fails it returns false, with the reason in `*status`.
bool begin(bool hasAddress, ENUM_VX_E_SOCKET* status)
{
    if (status == nullptr)
        return false;
    *status = hasAddress ? TcpSocket2::init() : VX_E_SOCKET_EINVAL;
    return *status == VX_E_SOCKET_OK;
}

} // namespace

InetSocketAddress::InetSocketAddress(const vx_sockaddr_union* address, ENUM_VX_E_SOCKET* status)
{
    if (!begin(address != nullptr, status))
        return;
    InetAddress* held = nullptr;
    *status = InetAddress::create(address, &held);
    m_address.reset(held);
    if (*status == VX_E_SOCKET_OK)
        m_port = ntohs(address->in4.sin_port);
}

InetSocketAddress::InetSocketAddress(const addrinfo* info, unsigned short port, ENUM_VX_E_SOCKET* status)
{
    if (!begin(info != nullptr, status))
        return;
    InetAddress* held = nullptr;
    *status = InetAddress::create(info, port, &held);
    m_address.reset(held);
    if (*status == VX_E_SOCKET_OK)
        m_port = port;
}

InetSocketAddress::~InetSocketAddress() = default;

ENUM_VX_E_SOCKET InetSocketAddress::getFamily(unsigned short* family) const
{
    return m_address != nullptr ? m_address->getFamily(family) : VX_E_SOCKET_EFAULT;
}

ENUM_VX_E_SOCKET InetSocketAddress::getPortHostOrder(unsigned short* port) const
{
    if (port == nullptr)
        return VX_E_SOCKET_EINVAL;
    *port = m_port;
    return VX_E_SOCKET_OK;
}

ENUM_VX_E_SOCKET InetSocketAddress::setPortHostOrder(unsigned short port)
{
    m_port = port;
    return VX_E_SOCKET_OK;
}

ENUM_VX_E_SOCKET InetSocketAddress::getAddressStr(String& text) const
{
    return m_address != nullptr ? m_address->getAddressStr(text) : VX_E_SOCKET_EFAULT;
}

void InetSocketAddress::getDiagnosticStr(String& text) const
{
    unsigned short family = 0;
    getFamily(&family);
    if (family == AF_INET6)
        text.append(u'[');
    else if (family != AF_INET)
        text.append(String::valueOf(static_cast<int>(family)));
    if (m_address != nullptr)
        m_address->appendAddress(text);
    else
        text.append(u"address missing");
    if (family == AF_INET6)
        text.append(u']');
    text.append(u':');
    text.append(String::valueOf(static_cast<int>(m_port)));
}

ENUM_VX_E_SOCKET InetSocketAddress::getPortHostOrderFromTcpServiceName(const char* service, unsigned short* port)
{
    ENUM_VX_E_SOCKET status = service != nullptr && port != nullptr ? TcpSocket2::init() : VX_E_SOCKET_EINVAL;
    unsigned short found = 0;
    if (status == VX_E_SOCKET_OK && *service != '\0') {
        found = VXGetTcpServicePort(service);
        if (found == 0)
            status = VX_E_SOCKET_NO_DATA;
    }
    if (port != nullptr)
        *port = found;
    return status;
}

} // namespace vx::net
