#include "Connections.h"

#include <vx/Exception.h>
#include <vx/TerminatedText.h>
#include <vx/net/SocketAddress.h>
#include <vx/net/TcpClientSocket2.h>
#include <vxsys/Lock.h>
#include <vxsys/Number.h>
#include <vxsys/Socket.h>

#include <algorithm>
#include <netdb.h>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>

namespace vx::components {

namespace {

/// 0 for a missing property.
std::int32_t numberOf(const util::PropertySet& properties, const char16_t* key, std::int32_t most)
{
    if (!properties.hasProperty(key))
        return 0;
    const String text = properties.get(key);
    const char16_t* end = nullptr;
    const TerminatedText terminated(text);
    const std::int32_t number = VXStrToLW(terminated, &end, 10);
    if (text.isEmpty() || end != terminated.get() + text.getLength() || number < 0 || number > most)
        throw ResultException(RESULT_INVALID_ARGUMENT, String(key).append(u" is no number: ").append(text));
    return number;
}

unsigned int lengthOf(const vx_sockaddr_union& address)
{
    return address.generic.sa_family == AF_INET6 ? sizeof address.in6 : sizeof address.in4;
}

/// If a signal interrupts the call, the attempt continues, and this function waits for it.
ENUM_VX_E_SOCKET connect(unsigned int socket, const vx_sockaddr_union& address, int timeout)
{
    const Wait wait(timeout);
    std::int32_t error = VXSocketConnect(socket, &address.generic, lengthOf(address));
    if (error == VX_SOCKET_INTERRUPTED)
        error = VXSocketFinishConnect(socket, wait.millisecondsLeft());
    return resultOfSocketError(error);
}

unsigned short& portOf(vx_sockaddr_union& address)
{
    return address.generic.sa_family == AF_INET6 ? address.in6.sin6_port : address.in4.sin_port;
}

/// A port of `host` that is free at this moment. The system chooses it for a socket that is closed again.
unsigned short pickPort(const String& host)
{
    vx_sockaddr_union address {};
    address.generic.sa_family = AF_INET;
    if (host != u"*")
        checkSocket(net::TcpSocket2::getAddrInfo(host.toUtf8().c_str(), 1, nullptr, 0, &address));
    portOf(address) = 0;

    net::TcpClientSocket2* created = nullptr;
    checkSocket(
        net::TcpClientSocket2::createTcpClientSocket2(address.generic.sa_family, SOCK_STREAM, IPPROTO_TCP, &created));
    const std::unique_ptr<net::TcpClientSocket2> socket(created);
    checkSocket(socket->bind(&address, lengthOf(address)));
    int length = sizeof address;
    checkSocket(socket->getLocalAddress(&address, &length));
    return ntohs(portOf(address));
}

} // namespace

TcpSettings::TcpSettings(const util::PropertySet& properties)
    : host(hostProperty(properties, u"host", u"127.0.0.1"))
    , port(static_cast<unsigned short>(numberOf(properties, u"port", 0xFFFF)))
    , timeout(numberOf(properties, u"timeout", INT32_MAX))
{
}

String hostProperty(const util::PropertySet& properties, const char16_t* key, const String& otherwise)
{
    if (!properties.hasProperty(key))
        return otherwise;
    const String host = properties.get(key);
    if (host.indexOf(u'\0') >= 0)
        throw ResultException(RESULT_INVALID_ARGUMENT, u"no name of a host: " + host);
    return host;
}

Wait::Wait(int milliseconds)
    : m_hasEnd(milliseconds > 0)
    , m_end(Clock::now() + std::chrono::milliseconds(milliseconds))
{
}

std::uint32_t Wait::millisecondsLeft() const
{
    if (!m_hasEnd)
        return VX_WAIT_FOREVER;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - Clock::now()).count();
    return static_cast<std::uint32_t>(std::max<std::int64_t>(left, 0));
}

void Wait::until(unsigned int socket, std::int16_t wanted) const
{
    checkSocket(resultOfSocketError(VXSocketWaitReady(socket, wanted, millisecondsLeft())));
}

void Wait::goOn(std::int32_t error, unsigned int socket, std::int16_t wanted) const
{
    if (error == VX_SOCKET_INTERRUPTED)
        until(socket, wanted);
    else
        checkSocket(resultOfSocketError(error));
}

void checkSocket(ENUM_VX_E_SOCKET result)
{
    throwIfFailed(result);
}

ENUM_VX_E_SOCKET resultOfSocketError(std::int32_t error)
{
    const bool hasTimedOut = error == VX_SOCKET_WOULD_BLOCK || error == VX_SOCKET_IN_PROGRESS;
    return hasTimedOut ? VX_E_SOCKET_ETIMEDOUT : VX_E_SOCKETFromNativeSocketError(error);
}

void limitWaits(const net::TcpSocketHandle& socket, int milliseconds)
{
    constexpr int SECOND = 1000;
    const timeval time {milliseconds / SECOND, milliseconds % SECOND * SECOND};
    for (const int option : {SO_RCVTIMEO, SO_SNDTIMEO})
        checkSocket(resultOfSocketError(VXSocketSetOption(socket.getSocket(), SOL_SOCKET, option, &time, sizeof time)));
}

Reference<net::TcpSocketHandle> connectTcp(const TcpSettings& settings)
{
    const std::string host = settings.host.toUtf8();
    addrinfo hints {};
    hints.ai_socktype = SOCK_STREAM;
    ENUM_VX_E_SOCKET failure = VX_E_SOCKET_HOST_NOT_FOUND;
    for (std::uint32_t index = 0;; ++index) {
        vx_sockaddr_union address {};
        const ENUM_VX_E_SOCKET found
            = net::TcpSocket2::getAddrInfo(host.c_str(), settings.port, &hints, index, &address);
        if (found != VX_E_SOCKET_OK)
            throwResult(index == 0 ? found : failure);

        unsigned int native = VX_SOCKET_INVALID;
        failure = resultOfSocketError(VXSocketOpen(address.generic.sa_family, SOCK_STREAM, 0, &native));
        if (failure != VX_E_SOCKET_OK)
            continue;
        const Reference<net::TcpSocketHandle> socket = net::TcpSocketHandle::own(native);
        limitWaits(*socket, settings.timeout);
        failure = connect(native, address, settings.timeout);
        if (failure == VX_E_SOCKET_OK)
            return socket;
    }
}

TcpListener::TcpListener(const TcpSettings& settings)
    : m_port(settings.port)
{
    ENUM_VX_E_SOCKET result = listen(settings.host);
    // Another process may take the chosen port first.
    for (int attempt = 1; settings.port == 0 && result == VX_E_SOCKET_EADDRINUSE && attempt < 16; ++attempt)
        result = listen(settings.host);
    checkSocket(result);
}

Reference<net::TcpSocketHandle> TcpListener::accept()
{
    unsigned int socket = VX_SOCKET_INVALID;
    while (socket == VX_SOCKET_INVALID) { // a connection may end before it is accepted, and a signal is no failure
        if (const ENUM_VX_E_SOCKET result = m_server->accept(&socket); result != VX_E_SOCKET_EINTR)
            checkSocket(result);
    }
    return net::TcpSocketHandle::own(socket);
}

ENUM_VX_E_SOCKET TcpListener::listen(const String& host)
{
    if (m_wantsAnyPort)
        m_port = pickPort(host);
    net::TcpServerSocket2* server = nullptr;
    checkSocket(net::TcpServerSocket2::createTcpServerSocket2(AF_INET, SOCK_STREAM, IPPROTO_TCP, &server));
    m_server.reset(server);
    if (host == u"*")
        checkSocket(m_server->bindListAddAddrAny(m_port));
    else
        checkSocket(m_server->bindListAddAddrInfo(host.toUtf8().c_str(), nullptr, m_port));
    if (const ENUM_VX_E_SOCKET result = m_server->bind(); result != VX_E_SOCKET_OK)
        return result;
    return m_server->listen(0);
}

void storePort(const util::PropertySet& properties, unsigned short port)
{
    // The set belongs to the caller, who reads the port from it.
    const_cast<util::PropertySet&>(properties).set(u"port", String::valueOf(int {port}));
}

} // namespace vx::components
