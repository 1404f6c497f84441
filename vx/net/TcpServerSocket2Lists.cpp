#include "vx/String.h"
#include "vx/net/TcpServerSocket2.h"
#include "vx/net/detail/NativeResult.h"
#include "vx/net/detail/TextOut.h"
#include "vxsys/Net.h"
#include "vxsys/Socket.h"
#include "vxsys/Text.h"

#include <charconv>
#include <cstdint>
#include <netdb.h>
#include <new>
#include <span>
#include <utility>

// The addresses that a server is to use, and those that it has.

namespace vx::net {

using namespace detail;

namespace {

/// The address of an entry or a socket, for a list. Null, and a failure in `*status`, if that fails.
template <class... Source>
std::unique_ptr<InetSocketAddress> makeAddress(ENUM_VX_E_SOCKET* status, Source... source)
{
    std::unique_ptr<InetSocketAddress> address(new (std::nothrow) InetSocketAddress(source..., status));
    if (address == nullptr)
        *status = VX_E_SOCKET_EFAULT;
    else if (*status != VX_E_SOCKET_OK || address->getAddress() == nullptr)
        address.reset();
    return address;
}

} // namespace

bool TcpServerSocket2::AddressList::add(std::unique_ptr<InetSocketAddress> address)
{
    if (m_size == MOST_ENTRIES)
        return false;
    m_entries[m_size++] = std::move(address);
    return true;
}

void TcpServerSocket2::AddressList::clear()
{
    while (m_size > 0)
        m_entries[--m_size].reset();
}

ENUM_VX_E_SOCKET TcpServerSocket2::bindListAddAddrAny(unsigned short port)
{
    ENUM_VX_E_SOCKET last = VX_E_SOCKET_OK;
    for (const int family : {AF_INET6, AF_INET}) {
        vx_sockaddr_union any {};
        any.generic.sa_family = static_cast<sa_family_t>(family);
        any.in4.sin_port = htons(port);
        ENUM_VX_E_SOCKET status = VX_E_SOCKET_OK;
        std::unique_ptr<InetSocketAddress> address = makeAddress(&status, &any);
        if (address != nullptr)
            address->getAddress()->setAddressAny();
        if (address == nullptr || !m_bindList.add(std::move(address)))
            last = VX_E_SOCKET_EFAULT;
    }
    return last;
}

ENUM_VX_E_SOCKET TcpServerSocket2::bindListAddAddrInfo(const char* hosts, const char* service, unsigned short port)
{
    if (hosts == nullptr || (port == 0 && (service == nullptr || *service == '\0')))
        return VX_E_SOCKET_EINVAL;
    ENUM_VX_E_SOCKET status = VX_E_SOCKET_OK;
    if (port == 0) {
        status = InetSocketAddress::getPortHostOrderFromTcpServiceName(service, &port);
        if (status != VX_E_SOCKET_OK)
            return status;
    }
    char portText[16] = "";
    std::to_chars(portText, portText + sizeof portText - 1, port);

    const std::unique_ptr<char, decltype(&VXStrFreeA)> copy(VXStrDupA(hosts), VXStrFreeA);
    if (copy == nullptr)
        return VX_E_SOCKET_EFAULT;
    for (char* host = copy.get(); host != nullptr;) {
        char* rest = const_cast<char*>(VXStrChrA(host, ','));
        if (rest != nullptr) {
            *rest++ = '\0';
            while (*rest == ' ')
                ++rest;
        }
        status = addHost(host, portText, port);
        host = rest;
    }
    return status;
}

ENUM_VX_E_SOCKET TcpServerSocket2::addHost(const char* host, const char* service, unsigned short port)
{
    addrinfo hints {};
    hints.ai_flags = AI_PASSIVE | AI_CANONNAME;
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    addrinfo* list = nullptr;
    if (const int error = VXgetaddrinfo(host, service, &hints, &list))
        return VX_E_SOCKETFromNativeEaiSocketError(error);
    const std::unique_ptr<addrinfo, decltype(&VXfreeaddrinfo)> owner(list, VXfreeaddrinfo);

    ENUM_VX_E_SOCKET status = VX_E_SOCKET_OK;
    bool hasAdded = false;
    for (; list != nullptr; list = list->ai_next) {
        if (list->ai_family != AF_INET && list->ai_family != AF_INET6)
            continue;
        std::unique_ptr<InetSocketAddress> address(new (std::nothrow) InetSocketAddress(list, port, &status));
        if (address == nullptr)
            continue;
        if (status != VX_E_SOCKET_OK)
            break;
        const InetAddress& found = *address->getAddress();
        if (found.isAddressAny() == 0 && found.isAddressNone() == 0 && m_bindList.add(std::move(address)))
            hasAdded = true;
    }
    return hasAdded ? status : VX_E_SOCKET_HOST_NOT_FOUND;
}

void TcpServerSocket2::bindListClear()
{
    m_bindList.clear();
}

void TcpServerSocket2::boundListClear()
{
    m_boundList.clear();
}

ENUM_VX_E_SOCKET TcpServerSocket2::bindListSaveOneForNamedPipeReply()
{
    ENUM_VX_E_SOCKET status = VX_E_SOCKET_OK;
    if (m_bindList.size() == 1) {
        vx_sockaddr_union storage {};
        unsigned int length = sizeof storage;
        const InetSocketAddress* only = m_bindList.get(0);
        if (only == nullptr || only->getAddress() == nullptr)
            status = VX_E_SOCKET_EFAULT;
        else
            status = only->getAddress()->getStorageBinary(&storage, &length);
        if (status == VX_E_SOCKET_OK)
            m_saved = makeAddress(&status, &storage);
    }
    m_bindList.clear();
    return status;
}

ENUM_VX_E_SOCKET TcpServerSocket2::saveBoundAddresses()
{
    if (m_saved != nullptr) {
        m_boundList.clear();
        m_boundList.add(std::move(m_saved));
        return VX_E_SOCKET_OK;
    }
    ENUM_VX_E_SOCKET last = VX_E_SOCKET_OK;
    for (const unsigned int handle : std::span(m_sockets).first(m_socketCount)) {
        vx_sockaddr_union storage {};
        std::uint32_t length = sizeof storage;
        ENUM_VX_E_SOCKET result = resultOf(VXSocketGetAddress(handle, &storage.generic, &length));
        if (result == VX_E_SOCKET_OK) {
            std::unique_ptr<InetSocketAddress> address = makeAddress(&result, &storage);
            if (address != nullptr && !m_boundList.add(std::move(address)))
                result = VX_E_SOCKET_EFAULT;
        }
        if (result != VX_E_SOCKET_OK)
            last = result;
    }
    return last;
}

ENUM_VX_E_SOCKET TcpServerSocket2::getBoundAddress(std::uint32_t index, signed char* address, unsigned int* length)
{
    if (address == nullptr || length == nullptr)
        return VX_E_SOCKET_EINVAL;
    unsigned int room = std::exchange(*length, 0U);
    if (index >= m_boundList.size())
        return VX_E_SOCKET_EADDRNOTAVAIL;
    const InetSocketAddress* entry = m_boundList.get(index);
    if (entry == nullptr || entry->getAddress() == nullptr)
        return VX_E_SOCKET_EFAULT;
    const ENUM_VX_E_SOCKET result
        = entry->getAddress()->getStorageBinary(reinterpret_cast<vx_sockaddr_union*>(address), &room);
    if (result == VX_E_SOCKET_OK)
        *length = room;
    return result;
}

ENUM_VX_E_SOCKET TcpServerSocket2::bindListAddressesDiagnosticStrA(char* text, std::uint32_t* length)
{
    return listAddressesDiagnosticStrA(m_bindList, text, length);
}

ENUM_VX_E_SOCKET TcpServerSocket2::boundListAddressesDiagnosticStrA(char* text, std::uint32_t* length)
{
    return listAddressesDiagnosticStrA(m_boundList, text, length);
}

ENUM_VX_E_SOCKET TcpServerSocket2::listAddressesDiagnosticStrA(
    const AddressList& list, char* text, std::uint32_t* length)
{
    return writeText(text, length, [&](String& joined) {
        for (unsigned int index = 0; index < list.size(); ++index) {
            if (index > 0)
                joined.append(u"; ");
            if (const InetSocketAddress* entry = list.get(index))
                entry->getDiagnosticStr(joined);
            else
                joined.append(u"[list(" + String::valueOf(index) + u")==NULL]");
        }
        return VX_E_SOCKET_OK;
    });
}

} // namespace vx::net
