#include "TcpTransport.h"

#include <vx/Exception.h>
#include <vx/TerminatedText.h>
#include <vx/io/Channels.h>
#include <vx/net/SocketAddress.h>
#include <vx/net/TcpClientSocket2.h>
#include <vx/net/TcpServerSocket2.h>
#include <vx/net/TcpSocketHandle.h>
#include <vx/util/PropertySet.h>
#include <vx/vorb/Boundary.h>
#include <vxsys/Lock.h>
#include <vxsys/Number.h>
#include <vxsys/Socket.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <netdb.h>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>

namespace vx::components {

namespace {

/// The values of the properties.
struct Settings {
    explicit Settings(const util::PropertySet& properties)
        : host(hostOf(properties))
        , port(static_cast<unsigned short>(numberOf(properties, u"port", 0xFFFF)))
        , timeout(numberOf(properties, u"timeout", INT32_MAX))
    {
    }

    String host;
    unsigned short port;
    int timeout;

private:
    static String hostOf(const util::PropertySet& properties)
    {
        if (!properties.hasProperty(u"host"))
            return u"127.0.0.1";
        const String host = properties.get(u"host");
        if (host.indexOf(u'\0') >= 0) // the system would look up only the text before it
            throw ResultException(RESULT_INVALID_ARGUMENT, u"no name of a host: " + host);
        return host;
    }

    /// 0 for a missing property.
    static std::int32_t numberOf(const util::PropertySet& properties, const char16_t* key, std::int32_t most)
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
};

void check(ENUM_VX_E_SOCKET result)
{
    throwIfFailed(result);
}

/// The result for the number of a socket error; a wait that took too long is one of them.
ENUM_VX_E_SOCKET resultOf(std::int32_t error)
{
    const bool hasTimedOut = error == VX_SOCKET_WOULD_BLOCK || error == VX_SOCKET_IN_PROGRESS;
    return hasTimedOut ? VX_E_SOCKET_ETIMEDOUT : VX_E_SOCKETFromNativeSocketError(error);
}

/// Limits each wait for the peer: for the connection, for room to send, for data to receive.
void limitWaits(const net::TcpSocketHandle& socket, int milliseconds)
{
    constexpr int SECOND = 1000;
    const timeval time {milliseconds / SECOND, milliseconds % SECOND * SECOND};
    for (const int option : {SO_RCVTIMEO, SO_SNDTIMEO})
        check(resultOf(VXSocketSetOption(socket.getSocket(), SOL_SOCKET, option, &time, sizeof time)));
}

/// Limits the total time of one call that waits. Without it, the call would start its wait again after each signal.
class Wait {
public:
    /// 0 milliseconds means without a limit.
    explicit Wait(int milliseconds)
        : m_hasEnd(milliseconds > 0)
        , m_end(Clock::now() + std::chrono::milliseconds(milliseconds))
    {
    }

    std::uint32_t millisecondsLeft() const
    {
        if (!m_hasEnd)
            return VX_WAIT_FOREVER;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - Clock::now()).count();
        return static_cast<std::uint32_t>(std::max<std::int64_t>(left, 0));
    }

    /// After the transfer that gave `error`. If a signal interrupted it, waits until `socket` is ready for `wanted`.
    /// Throws for another error, and if the wait takes too long.
    void goOn(std::int32_t error, unsigned int socket, std::int16_t wanted) const
    {
        if (error == VX_SOCKET_INTERRUPTED)
            error = VXSocketWaitReady(socket, wanted, millisecondsLeft());
        check(resultOf(error));
    }

private:
    using Clock = std::chrono::steady_clock;

    bool m_hasEnd;
    Clock::time_point m_end;
};

class Input final : public io::InputStream {
public:
    Input(net::TcpSocketHandle* socket, int timeout)
        : m_socket(socket)
        , m_timeout(timeout)
    {
    }

    // InputStream
    using InputStream::read;
    std::int32_t read(signed char* target, std::int32_t length) override
    {
        if (length < 1)
            return 0;
        const unsigned int socket = m_socket->getSocket();
        const Wait wait(m_timeout);
        for (;;) {
            std::int32_t got = 0;
            const std::int32_t error = VXSocketReceive(socket, target, static_cast<std::uint32_t>(length), 0, &got);
            if (error == 0)
                return got > 0 ? got : -1;
            wait.goOn(error, socket, VX_SOCKET_READ);
        }
    }

private:
    Reference<net::TcpSocketHandle> m_socket;
    const int m_timeout;
};

class Output final : public io::OutputStream {
public:
    Output(net::TcpSocketHandle* socket, int timeout)
        : m_socket(socket)
        , m_timeout(timeout)
    {
    }

    // OutputStream
    using OutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override
    {
        const unsigned int socket = m_socket->getSocket();
        Wait wait(m_timeout);
        while (length > 0) {
            std::int32_t sent = 0;
            const std::int32_t error = VXSocketSend(socket, bytes, static_cast<std::uint32_t>(length), 0, &sent);
            wait.goOn(error, socket, VX_SOCKET_WRITE);
            if (sent > 0) { // less than all after a signal, or if the wait for more room took too long
                bytes += sent;
                length -= sent;
                wait = Wait(m_timeout);
            }
        }
    }

private:
    Reference<net::TcpSocketHandle> m_socket;
    const int m_timeout;
};

/// The native socket lives as long as the streams in the channel.
Reference<io::IChannel> channelOf(net::TcpSocketHandle* socket, int timeout)
{
    const Reference<io::InputStream> input(new Input(socket, timeout));
    const Reference<io::OutputStream> output(new Output(socket, timeout));
    return io::Channels::adaptStreams(
        input.get(), output.get(), u"vx.net.tcp.socket=" + String::valueOf(socket->getSocket()));
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
    return resultOf(error);
}

/// A connection to the first address that accepts one.
Reference<net::TcpSocketHandle> connectTo(const Settings& settings)
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
        failure = resultOf(VXSocketOpen(address.generic.sa_family, SOCK_STREAM, 0, &native));
        if (failure != VX_E_SOCKET_OK)
            continue;
        const Reference<net::TcpSocketHandle> socket = net::TcpSocketHandle::own(native);
        limitWaits(*socket, settings.timeout);
        failure = connect(native, address, settings.timeout);
        if (failure == VX_E_SOCKET_OK)
            return socket;
    }
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
        check(net::TcpSocket2::getAddrInfo(host.toUtf8().c_str(), 1, nullptr, 0, &address));
    portOf(address) = 0;

    net::TcpClientSocket2* created = nullptr;
    check(net::TcpClientSocket2::createTcpClientSocket2(address.generic.sa_family, SOCK_STREAM, IPPROTO_TCP, &created));
    const std::unique_ptr<net::TcpClientSocket2> socket(created);
    check(socket->bind(&address, lengthOf(address)));
    int length = sizeof address;
    check(socket->getLocalAddress(&address, &length));
    return ntohs(portOf(address));
}

class Acceptor final : public net::vorb::AbstractAcceptor {
public:
    explicit Acceptor(const Settings& settings)
        : m_port(settings.port)
        , m_timeout(settings.timeout)
    {
        ENUM_VX_E_SOCKET result = listen(settings.host);
        // Another process may take the chosen port first.
        for (int attempt = 1; settings.port == 0 && result == VX_E_SOCKET_EADDRINUSE && attempt < 16; ++attempt)
            result = listen(settings.host);
        check(result);
    }

    unsigned short port() const noexcept { return m_port; }

    // IVXAcceptor
    std::int32_t Accept(const _GUID& iid, void** result) override
    {
        return vorb::resultAtBoundary([&] { return AbstractAcceptor::Accept(iid, result); });
    }

    // IAcceptor
    Reference<io::IChannel> accept() override
    {
        unsigned int socket = VX_SOCKET_INVALID;
        while (socket == VX_SOCKET_INVALID) { // a connection may end before it is accepted, and a signal is no failure
            if (const ENUM_VX_E_SOCKET result = m_server->accept(&socket); result != VX_E_SOCKET_EINTR)
                check(result);
        }
        const Reference<net::TcpSocketHandle> connection = net::TcpSocketHandle::own(socket);
        limitWaits(*connection, m_timeout);
        return channelOf(connection.get(), m_timeout);
    }

private:
    ENUM_VX_E_SOCKET listen(const String& host)
    {
        if (m_wantsAnyPort)
            m_port = pickPort(host);
        net::TcpServerSocket2* server = nullptr;
        check(net::TcpServerSocket2::createTcpServerSocket2(AF_INET, SOCK_STREAM, IPPROTO_TCP, &server));
        m_server.reset(server);
        if (host == u"*")
            check(m_server->bindListAddAddrAny(m_port));
        else
            check(m_server->bindListAddAddrInfo(host.toUtf8().c_str(), nullptr, m_port));
        if (const ENUM_VX_E_SOCKET result = m_server->bind(); result != VX_E_SOCKET_OK)
            return result;
        return m_server->listen(0);
    }

    std::unique_ptr<net::TcpServerSocket2> m_server;
    unsigned short m_port;
    const bool m_wantsAnyPort = m_port == 0;
    const int m_timeout;
};

class Connector final : public net::vorb::AbstractConnector {
public:
    explicit Connector(const Settings& settings)
        : m_settings(settings)
    {
    }

    // IVXConnector2
    std::int32_t Connect(const _GUID& iid, void** result) override
    {
        return vorb::resultAtBoundary([&] { return AbstractConnector::Connect(iid, result); });
    }

    // IConnector
    Reference<io::IChannel> connect() override { return channelOf(connectTo(m_settings).get(), m_settings.timeout); }

private:
    const Settings m_settings;
};

} // namespace

std::int32_t TcpTransport::CreateAcceptor(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
{
    return vorb::resultAtBoundary([&] { return AbstractTransport::CreateAcceptor(properties, iid, result); });
}

std::int32_t TcpTransport::CreateConnector(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
{
    return vorb::resultAtBoundary([&] { return AbstractTransport::CreateConnector(properties, iid, result); });
}

Reference<net::IConnector> TcpTransport::createConnector(const util::PropertySet& properties)
{
    const Settings settings(properties);
    if (settings.port == 0)
        throw ResultException(RESULT_INVALID_ARGUMENT, u"no port to connect to");
    return new Connector(settings);
}

Reference<net::IAcceptor> TcpTransport::createAcceptor(const util::PropertySet& properties)
{
    const Settings settings(properties);
    const Reference<Acceptor> acceptor(new Acceptor(settings));
    if (settings.port == 0) // the set belongs to the caller, who reads the port from it
        const_cast<util::PropertySet&>(properties).set(u"port", String::valueOf(int {acceptor->port()}));
    return acceptor;
}

} // namespace vx::components
