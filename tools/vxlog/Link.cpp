#include "Link.h"

#include "common/Failure.h"

#include <vx/net/SocketResult.h>
#include <vxsys/Socket.h>

#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

namespace vxlog {

namespace {

using vx::net::TcpClientSocket2;

std::string textOf(ENUM_VX_E_SOCKET result)
{
    std::string text = vxtools::textOfResult(result);
    if (text.ends_with('.'))
        text.pop_back(); // more may follow in the message
    return text;
}

void set(TcpClientSocket2& socket, int level, int option, int value)
{
    socket.setsockopt(level, option, reinterpret_cast<const char*>(&value), sizeof value);
}

/// A machine that has gone is noticed within a few minutes, whether lines are on their way or not. Lines leave at once.
void setOptions(TcpClientSocket2& socket)
{
    constexpr int IDLE_SECONDS = 60, BETWEEN_SECONDS = 15, COUNT = 8, MILLISECONDS = 180'000;
    set(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
    set(socket, IPPROTO_TCP, TCP_KEEPIDLE, IDLE_SECONDS);
    set(socket, IPPROTO_TCP, TCP_KEEPINTVL, BETWEEN_SECONDS);
    set(socket, IPPROTO_TCP, TCP_KEEPCNT, COUNT);
    set(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, MILLISECONDS);
    set(socket, IPPROTO_TCP, TCP_NODELAY, 1);
}

} // namespace

Link::Link(std::unique_ptr<TcpClientSocket2> socket, const vxtools::TlsContext* tls)
    : m_socket(std::move(socket))
    , m_wire(m_socket->getId(), tls)
{
}

std::unique_ptr<Link> Link::open(
    const Destination& destination, const vxtools::TlsContext* tls, const Wait& wait, std::string& reason)
{
    addrinfo hints {};
    hints.ai_socktype = SOCK_STREAM;
    for (std::uint32_t index = 0;; ++index) {
        vx_sockaddr_union address {};
        const ENUM_VX_E_SOCKET found
            = TcpClientSocket2::getAddrInfo(destination.host.c_str(), destination.port, &hints, index, &address);
        if (found != VX_E_SOCKET_OK) {
            if (index == 0)
                reason = textOf(found);
            return nullptr; // the reason of the last address is told
        }
        TcpClientSocket2* made = nullptr;
        ENUM_VX_E_SOCKET result
            = TcpClientSocket2::createTcpClientSocket2(address.generic.sa_family, SOCK_STREAM, 0, &made);
        std::unique_ptr<TcpClientSocket2> socket(made);
        if (result == VX_E_SOCKET_OK) {
            const int descriptor = static_cast<int>(socket->getId());
            ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
            setOptions(*socket);
            result = socket->connect(
                &address, address.generic.sa_family == AF_INET ? sizeof address.in4 : sizeof address.in6);
            if (result == VX_E_SOCKET_EINPROGRESS || result == VX_E_SOCKET_EWOULDBLOCK || result == VX_E_SOCKET_EINTR) {
                if (!wait(descriptor, POLLOUT)) {
                    reason.clear();
                    return nullptr;
                }
                const std::int32_t error = VXSocketTakeError(socket->getId());
                result = error == 0 ? VX_E_SOCKET_OK : VX_E_SOCKETFromNativeSocketError(error);
            }
        }
        if (result == VX_E_SOCKET_OK) {
            std::unique_ptr<Link> link(new Link(std::move(socket), tls));
            if (link->shakeHands(wait, reason))
                return link;
            return nullptr; // another address of the same server would not help
        }
        reason = textOf(result);
    }
}

int Link::descriptor() const
{
    return static_cast<int>(m_socket->getId());
}

bool Link::shakeHands(const Wait& wait, std::string& reason)
{
    for (;;) {
        switch (m_wire.shakeHands()) {
        case Result::DONE:
            return true;
        case Result::LATER:
            if (!wait(descriptor(), static_cast<short>(m_wire.wantsToWrite(false) ? POLLIN | POLLOUT : POLLIN))) {
                reason.clear();
                return false;
            }
            break;
        case Result::CLOSED:
        case Result::BROKEN:
            reason = m_wire.reason();
            return false;
        }
    }
}

} // namespace vxlog
