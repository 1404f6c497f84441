#include "vx/net/TcpServerSocket.h"

#include "vx/Exception.h"
#include "vx/String.h"
#include "vx/io/IoException.h"
#include "vx/net/TcpSocket2.h"
#include "vxsys/Socket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

namespace vx::net {

namespace {

template <class Failure>
[[noreturn]] void failWithError()
{
    const std::string why = std::generic_category().message(errno);
    throw Failure(u"TcpServerSocket: " + String(why.c_str()));
}

Reference<TcpSocketHandle> openListener()
{
    const ENUM_VX_E_SOCKET started = TcpSocket2::init();
    if (started != VX_E_SOCKET_OK)
        throw Exception(u"TcpServerSocket: Winsock failed to load " + String(VXGetDescriptionFromVX_E_SOCKET(started)));
    unsigned int socket = VX_SOCKET_INVALID;
    if (VXSocketOpen(AF_INET, SOCK_STREAM, 0, &socket) != 0)
        failWithError<io::IoException>();
    return TcpSocketHandle::own(socket);
}

} // namespace

TcpServerSocket::TcpServerSocket(unsigned short port, int backlog)
    : m_handle(openListener())
{
    const unsigned int socket = m_handle->getSocket();
    vx_sockaddr_union address {};
    address.in4.sin_family = AF_INET;
    address.in4.sin_port = htons(port);
    if (VXSocketBind(socket, &address.generic, sizeof address.in4) != 0 || VXSocketListen(socket, backlog) != 0)
        failWithError<Exception>();
}

TcpServerSocket::~TcpServerSocket() noexcept(false) = default;

Reference<TcpSocket> TcpServerSocket::accept()
{
    vx_sockaddr_union peer {};
    std::uint32_t length = sizeof peer.in4;
    unsigned int socket = VX_SOCKET_INVALID;
    const std::int32_t error = VXSocketAccept(m_handle->getSocket(), &peer.generic, &length, &socket);
    if (error != 0)
        throw Exception(u"TcpServerSocket::accept WSERROR " + String::valueOf(error));
    Reference<TcpSocketHandle> handle = TcpSocketHandle::own(socket); // before an object is created, which may fail
    return new TcpSocket(std::move(handle));
}

unsigned short TcpServerSocket::getPort() const
{
    vx_sockaddr_union address {};
    std::uint32_t length = sizeof address;
    if (VXSocketGetAddress(m_handle->getSocket(), &address.generic, &length) != 0)
        failWithError<Exception>();
    return ntohs(address.in4.sin_port);
}

} // namespace vx::net
