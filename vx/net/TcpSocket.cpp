#include "vx/net/TcpSocket.h"

#include "vx/Exception.h"
#include "vx/Occasion.h"
#include "vx/String.h"
#include "vx/io/IoException.h"
#include "vx/net/TcpSocket2.h"
#include "vx/net/TcpSocketStreams.h"
#include "vx/net/detail/Listeners.h"
#include "vx/net/detail/NativeResult.h"
#include "vx/sync/ScopedLock.h"
#include "vxsys/Lock.h"
#include "vxsys/Net.h"
#include "vxsys/Socket.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <utility>

namespace vx::net {

using namespace detail;

namespace {

String describe(const char16_t* where, ENUM_VX_E_SOCKET why)
{
    return String(where) + String(VXGetDescriptionFromVX_E_SOCKET(why));
}

/// Stores the first address of a host, without a port.
ENUM_VX_E_SOCKET lookUp(const String& host, vx_sockaddr_union& address, socklen_t& length)
{
    addrinfo hints {};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    if (host.indexOf(u'\0') >= 0) // the system would look up the text before it
        return VX_E_SOCKET_HOST_NOT_FOUND;
    addrinfo* list = nullptr;
    const std::int32_t error = VXgetaddrinfo(host.getBytes(), nullptr, &hints, &list);
    const std::unique_ptr<addrinfo, decltype(&VXfreeaddrinfo)> owner(list, VXfreeaddrinfo);
    if (list == nullptr)
        return error != 0 ? VX_E_SOCKETFromNativeEaiSocketError(error) : VX_E_SOCKET_HOST_NOT_FOUND;
    length = std::min<socklen_t>(list->ai_addrlen, sizeof address);
    std::memcpy(&address, list->ai_addr, length);
    return VX_E_SOCKET_OK;
}

} // namespace

std::atomic<bool> TcpSocket::s_bInitialized {false};

TcpSocketHandle::~TcpSocketHandle() noexcept
{
    VXSocketClose(m_socket);
}

Reference<TcpSocketHandle> TcpSocketHandle::own(unsigned int socket)
{
    try {
        return new TcpSocketHandle(socket);
    } catch (...) {
        VXSocketClose(socket);
        throw;
    }
}

TcpSocket::TcpSocket(const String& host, unsigned short port)
    : TcpSocket(host, port, VX_WAIT_FOREVER)
{
}

TcpSocket::TcpSocket(const String& host, unsigned short port, std::uint32_t milliseconds)
{
    constexpr std::u16string_view CONNECT = u"connect to";
    const auto place = [&] { return textOf(host, port); };

    init();
    socklen_t length = 0;
    vx_sockaddr_union address {};
    if (const ENUM_VX_E_SOCKET why = lookUp(host, address, length); why != VX_E_SOCKET_OK)
        throwDuring(CONNECT, place, Exception(u"Unknown host: " + host), why);
    unsigned int socket = VX_SOCKET_INVALID;
    std::int32_t error = VXSocketOpen(address.generic.sa_family, SOCK_STREAM, 0, &socket);
    if (error != 0)
        throwDuring(
            CONNECT, place, io::IoException(describe(u"TcpSocket::TcpSocket ", resultOf(error))), resultOf(error));
    m_handle = TcpSocketHandle::own(socket);
    address.in4.sin_port = htons(port);
    error = VXSocketTimedConnect(socket, &address.generic, length, milliseconds);
    if (error == 0)
        return;
    const String failure = u"TcpSocket::TcpSocket Unable to connect to " + host + describe(u" ", resultOf(error));
    if (error == VX_SOCKET_TIMED_OUT && milliseconds != VX_WAIT_FOREVER)
        throwDuring(CONNECT, place, io::TimeoutException(failure), resultOf(error));
    throwDuring(CONNECT, place, Exception(failure), resultOf(error));
}

TcpSocket::TcpSocket(unsigned int socket)
    : TcpSocket(TcpSocketHandle::own(socket))
{
}

TcpSocket::TcpSocket(Reference<TcpSocketHandle> handle)
    : m_handle(std::move(handle))
{
}

TcpSocket::~TcpSocket() noexcept(false) = default;

Reference<io::InputStream> TcpSocket::getInputStream()
{
    return &inputStream();
}

Reference<io::OutputStream> TcpSocket::getOutputStream()
{
    return &outputStream();
}

void TcpSocket::setSoTimeout(int milliseconds)
{
    inputStream().setTimeout(milliseconds);
}

void TcpSocket::setWriteTimeout(int milliseconds)
{
    outputStream().setTimeout(milliseconds);
}

String TcpSocket::getInheritanceId()
{
    return u"vx.net.tcp.socket=" + String::valueOf(m_handle->getSocket());
}

TcpSocketInputStream& TcpSocket::inputStream()
{
    const sync::ScopedLock lock(m_lock);
    if (m_input == nullptr)
        m_input = new TcpSocketInputStream(m_handle.get());
    return *m_input;
}

TcpSocketOutputStream& TcpSocket::outputStream()
{
    const sync::ScopedLock lock(m_lock);
    if (m_output == nullptr)
        m_output = new TcpSocketOutputStream(m_handle.get());
    return *m_output;
}

void TcpSocket::init()
{
    if (s_bInitialized)
        return;
    const ENUM_VX_E_SOCKET result = TcpSocket2::init();
    if (result != VX_E_SOCKET_OK)
        throw Exception(describe(u"TcpSocket::init ", result));
    s_bInitialized = true;
}

void TcpSocket::uninit()
{
    if (!s_bInitialized)
        return;
    const ENUM_VX_E_SOCKET result = TcpSocket2::uninit();
    if (result != VX_E_SOCKET_OK)
        throw Exception(describe(u"TcpSocket::uninit ", result));
    s_bInitialized = false;
}

bool TcpSocket::getInitialized()
{
    return s_bInitialized;
}

void TcpSocket::close(unsigned int socket) noexcept
{
    VXSocketClose(socket);
}

} // namespace vx::net
