#include "TcpTransport.h"

#include <vx/Exception.h>
#include <vx/io/Channels.h>
#include <vx/net/SocketAddress.h>
#include <vx/net/TcpClientSocket2.h>
#include <vx/net/TcpServerSocket2.h>
#include <vx/net/TcpSocket.h>
#include <vx/util/PropertySet.h>
#include <vx/vorb/Boundary.h>
#include <vxsys/Number.h>

#include <cerrno>
#include <memory>

namespace vx::components {

namespace {

/// What the properties say.
struct Settings {
    explicit Settings(const util::PropertySet& properties)
        : host(properties.hasProperty(u"host") ? properties.get(u"host") : String(u"127.0.0.1"))
        , port(static_cast<unsigned short>(numberOf(properties, u"port", 0xFFFF)))
        , timeout(numberOf(properties, u"timeout", INT32_MAX))
    {
    }

    String host;
    unsigned short port;
    int timeout;

private:
    /// 0 for one that is not there.
    static std::int32_t numberOf(const util::PropertySet& properties, const char16_t* key, std::int32_t most)
    {
        if (!properties.hasProperty(key))
            return 0;
        const String text = properties.get(key);
        const char16_t* end = nullptr;
        const std::int32_t number = VXStrToLW(text.getData(), &end, 10);
        if (text.isEmpty() || *end != 0 || number < 0 || number > most)
            throw ResultException(RESULT_INVALID_ARGUMENT, String(key).append(u" is no number: ").append(text));
        return number;
    }
};

void check(ENUM_VX_E_SOCKET result)
{
    throwIfFailed(result);
}

/// A socket of the stream generation over a native one.
class AcceptedSocket final : public net::TcpSocket {
public:
    explicit AcceptedSocket(unsigned int native)
        : TcpSocket(native)
    {
    }
};

/// The native socket lives as long as the streams in the channel.
Reference<io::IChannel> channelOf(net::TcpSocket* socket, int timeout)
{
    const Reference<net::TcpSocket> held(socket);
    held->setSoTimeout(timeout);
    return io::Channels::adaptStreams(
        held->getInputStream().get(), held->getOutputStream().get(), held->getInheritanceId());
}

unsigned short& portOf(vx_sockaddr_union& address)
{
    return address.generic.sa_family == AF_INET6 ? address.in6.sin6_port : address.in4.sin_port;
}

/// A port of `host` that is free at this moment: the system picks it for a socket that goes again.
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
    int length = address.generic.sa_family == AF_INET6 ? sizeof address.in6 : sizeof address.in4;
    check(socket->bind(&address, static_cast<unsigned int>(length)));
    length = sizeof address;
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
        // Somebody may take a picked port first.
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
        constexpr unsigned int NONE = ~0U;
        unsigned int socket = NONE;
        while (socket == NONE) // a connection may be gone before it is taken
            check(m_server->accept(&socket));
        return channelOf(new AcceptedSocket(socket), m_timeout);
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
    Reference<io::IChannel> connect() override
    {
        return channelOf(new net::TcpSocket(m_settings.host, m_settings.port), m_settings.timeout);
    }

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
    if (settings.port == 0) // the component's set is the caller's, and it may be told
        const_cast<util::PropertySet&>(properties).set(u"port", String::valueOf(int {acceptor->port()}));
    return acceptor;
}

} // namespace vx::components
