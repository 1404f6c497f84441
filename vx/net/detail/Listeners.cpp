#include "vx/net/detail/Listeners.h"

#include "vx/Exception.h"
#include "vx/detail/OneLine.h"
#include "vx/net/InetSocketAddress.h"
#include "vx/net/TcpSocket2.h"
#include "vx/net/detail/NativeResult.h"
#include "vxsys/Net.h"
#include "vxsys/Socket.h"

#include <algorithm>
#include <arpa/inet.h>
#include <climits>
#include <cstring>
#include <memory>
#include <netdb.h>

namespace vx::net::detail {

namespace {

struct Address {
    vx_sockaddr_union storage {};
    std::uint32_t length = 0;

    bool operator==(const Address& other) const
    {
        return length == other.length && std::memcmp(&storage, &other.storage, length) == 0;
    }
};

[[noreturn]] void fail(const String& where, ENUM_VX_E_SOCKET why)
{
    throw ResultException(why, u"listen on " + where + u": " + String(VXGetDescriptionFromVX_E_SOCKET(why)));
}

void addAddresses(const std::string& host, std::uint16_t port, std::vector<Address>& addresses)
{
    constexpr std::string_view EVERYWHERE = "*";
    const String place = textOf(vx::detail::foreignText(host), port);
    if (host.find('\0') != host.npos) // the system would look up the text before it
        fail(place, VX_E_SOCKET_HOST_NOT_FOUND);
    addrinfo hints {};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE;
    addrinfo* list = nullptr;
    const std::int32_t error = VXgetaddrinfo(host == EVERYWHERE ? nullptr : host.c_str(), "0", &hints, &list);
    const std::unique_ptr<addrinfo, decltype(&VXfreeaddrinfo)> owner(list, VXfreeaddrinfo);
    if (error != 0)
        fail(place, VX_E_SOCKETFromNativeEaiSocketError(error));
    for (; list != nullptr; list = list->ai_next) {
        if (list->ai_family != AF_INET && list->ai_family != AF_INET6)
            continue;
        Address address;
        address.length = std::min<std::uint32_t>(list->ai_addrlen, sizeof address.storage);
        std::memcpy(&address.storage, list->ai_addr, address.length);
        if (std::find(addresses.begin(), addresses.end(), address) == addresses.end())
            addresses.push_back(address);
    }
}

/// The port of the address becomes the one that the system has chosen.
ENUM_VX_E_SOCKET listenOn(Address& address, Reference<TcpSocketHandle>& handle)
{
    const int family = address.storage.generic.sa_family;
    unsigned int socket = VX_SOCKET_INVALID;
    if (const std::int32_t error = VXSocketOpen(family, SOCK_STREAM | SOCK_NONBLOCK, 0, &socket); error != 0)
        return resultOf(error);
    handle = TcpSocketHandle::own(socket);
    const int on = 1;
    if (family == AF_INET6) // IPv4 has separate sockets
        VXSocketSetOption(socket, IPPROTO_IPV6, IPV6_V6ONLY, &on, sizeof on);
    VXSocketSetOption(
        socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on); // also while connections of an earlier server are closing
    std::int32_t error = VXSocketBind(socket, &address.storage.generic, address.length);
    if (error == 0)
        error = VXSocketListen(socket, INT_MAX);
    std::uint32_t length = sizeof address.storage;
    if (error == 0)
        error = VXSocketGetAddress(socket, &address.storage.generic, &length);
    return resultOf(error);
}

/// VX_E_SOCKET_EADDRINUSE if the port that the system has chosen for one address is used on another.
ENUM_VX_E_SOCKET listenOn(const std::vector<Address>& addresses, std::uint16_t port, Listeners& listeners)
{
    listeners = {};
    listeners.port = port;
    ENUM_VX_E_SOCKET last = VX_E_SOCKET_HOST_NOT_FOUND;
    for (Address address : addresses) {
        address.storage.in4.sin_port = htons(listeners.port); // in the same place for both families
        Reference<TcpSocketHandle> handle;
        const ENUM_VX_E_SOCKET result = listenOn(address, handle);
        if (result == VX_E_SOCKET_OK) {
            listeners.port = ntohs(address.storage.in4.sin_port);
            listeners.sockets.push_back(handle);
            listeners.addresses.push_back(textOf(address.storage));
            continue;
        }
        if (port == 0 && listeners.port != 0 && result == VX_E_SOCKET_EADDRINUSE)
            return result;
        if (result != VX_E_SOCKET_EAFNOSUPPORT && result != VX_E_SOCKET_EADDRNOTAVAIL)
            fail(textOf(address.storage), result);
        last = result;
    }
    if (listeners.sockets.empty())
        fail(addresses.empty() ? String(u"no address") : textOf(addresses.front().storage), last);
    return VX_E_SOCKET_OK;
}

} // namespace

String textOf(const vx_sockaddr_union& address)
{
    ENUM_VX_E_SOCKET status = VX_E_SOCKET_OK;
    String text;
    InetSocketAddress(&address, &status).getDiagnosticStr(text);
    return text;
}

String textOf(const String& host, std::uint16_t port)
{
    const String name = host.indexOf(u':') < 0 ? host : u"[" + host + u"]";
    return name + u":" + String::valueOf(port);
}

Listeners listenOn(const std::vector<std::string>& hosts, std::uint16_t port)
{
    constexpr int MOST_TRIES = 100;
    throwIfFailed(TcpSocket2::init());
    std::vector<Address> addresses;
    for (const std::string& host : hosts)
        addAddresses(host, port, addresses);
    Listeners listeners;
    for (int tries = 1; listenOn(addresses, port, listeners) != VX_E_SOCKET_OK; ++tries) {
        if (tries == MOST_TRIES)
            fail(textOf(addresses.front().storage), VX_E_SOCKET_EADDRINUSE);
    }
    return listeners;
}

} // namespace vx::net::detail
