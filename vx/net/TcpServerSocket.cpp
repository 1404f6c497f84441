#include "vx/net/TcpServerSocket.h"

#include "vx/Exception.h"
#include "vx/Occasion.h"
#include "vx/String.h"
#include "vx/io/IoException.h"
#include "vx/net/TcpSocket2.h"
#include "vx/net/detail/NativeResult.h"
#include "vxsys/Socket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace vx::net {

namespace {

/// `error` is the result of a call of the platform layer, which also set `errno`.
template <class Failure>
[[noreturn]] void failToListen(unsigned short port, std::int32_t error)
{
    const std::string why = std::generic_category().message(errno);
    throwDuring(u"listen on", u"0.0.0.0:" + String::valueOf(port), Failure(u"TcpServerSocket: " + String(why.c_str())),
        detail::resultOf(error));
}

Reference<TcpSocketHandle> openListener(unsigned short port)
{
    const ENUM_VX_E_SOCKET started = TcpSocket2::init();
    if (started != VX_E_SOCKET_OK)
        throw Exception(u"TcpServerSocket: Winsock failed to load " + String(VXGetDescriptionFromVX_E_SOCKET(started)));
    unsigned int socket = VX_SOCKET_INVALID;
    if (const std::int32_t error = VXSocketOpen(AF_INET, SOCK_STREAM, 0, &socket); error != 0)
        failToListen<io::IoException>(port, error);
    return TcpSocketHandle::own(socket);
}

} // namespace

TcpServerSocket::TcpServerSocket(unsigned short port, int backlog)
    : m_handle(openListener(port))
{
    const unsigned int socket = m_handle->getSocket();
    vx_sockaddr_union address {};
    address.in4.sin_family = AF_INET;
    address.in4.sin_port = htons(port);
    std::int32_t error = VXSocketBind(socket, &address.generic, sizeof address.in4);
    if (error == 0)
        error = VXSocketListen(socket, backlog);
    if (error != 0)
        failToListen<Exception>(port, error);
}

TcpServerSocket::~TcpServerSocket() noexcept(false) = default;

Reference<TcpSocket> TcpServerSocket::accept()
{
    vx_sockaddr_union peer {};
    std::uint32_t length = sizeof peer.in4;
    unsigned int socket = VX_SOCKET_INVALID;
    const std::int32_t error = VXSocketAccept(m_handle->getSocket(), &peer.generic, &length, &socket);
    if (error != 0)
        throwDuring(u"accept", u"a connection", Exception(u"TcpServerSocket::accept WSERROR " + String::valueOf(error)),
            detail::resultOf(error));
    Reference<TcpSocketHandle> handle = TcpSocketHandle::own(socket); // before an object is created, which may fail
    return new TcpSocket(std::move(handle));
}

unsigned short TcpServerSocket::getPort() const
{
    vx_sockaddr_union address {};
    std::uint32_t length = sizeof address;
    throwIfFailed(detail::resultOf(VXSocketGetAddress(m_handle->getSocket(), &address.generic, &length)),
        u"get the port of", u"a server socket");
    return ntohs(address.in4.sin_port);
}

} // namespace vx::net
