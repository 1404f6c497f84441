#include "TlsTransport.h"

#include "../ComponentLibrary.h"
#include "Failures.h"
#include "TlsChannel.h"

#include <vx/Occasion.h>
#include <vx/Result.h>
#include <vx/net/InetSocketAddress.h>
#include <vx/net/SocketAddress.h>

#include <sys/socket.h>

namespace vx::components {

namespace {

/// "localhost:7514" or "[::1]:7514".
String placeOf(const TcpSettings& settings)
{
    const bool isNumeric = settings.host.indexOf(u':') >= 0;
    const String host = isNumeric ? u"[" + settings.host + u"]" : settings.host;
    return host + u":" + String::valueOf(int {settings.port});
}

String peerOf(const net::TcpSocketHandle& socket)
{
    vx_sockaddr_union address {};
    socklen_t length = sizeof address;
    String text;
    ENUM_VX_E_SOCKET status = VX_E_SOCKET_OK;
    if (::getpeername(static_cast<int>(socket.getSocket()), &address.generic, &length) == 0)
        net::InetSocketAddress(&address, &status).getDiagnosticStr(text);
    return text.isEmpty() ? String(u"a client") : text;
}

class Acceptor final : public net::vorb::AbstractAcceptor, public vorb::IVXFailureText {
public:
    Acceptor(const TcpSettings& settings, Reference<Context> context)
        : m_context(std::move(context))
        , m_listener(settings)
        , m_timeout(settings.timeout)
    {
    }

    VX_OBJECT_UNKNOWN(AbstractAcceptor)
    static const vorb::InterfaceData* GetComIntfMap()
    {
        static const vorb::InterfaceData map[]
            = {vorb::viewRow<Acceptor, vorb::IVXFailureText>(), vorb::forwardRow<AbstractAcceptor>(), vorb::endRow()};
        return map;
    }

    unsigned short port() const noexcept { return m_listener.port(); }

    // IVXAcceptor
    std::int32_t Accept(const _GUID& iid, void** result) override
    {
        return withFailureText([&] { return AbstractAcceptor::Accept(iid, result); });
    }

    // IAcceptor
    Reference<io::IChannel> accept() override
    {
        const Reference<net::TcpSocketHandle> socket = m_listener.accept();
        return inModule(GetComModule(), new TlsChannel(socket, m_context->newSession(), m_timeout, peerOf(*socket)));
    }

    // IVXFailureText
    std::int32_t GetFailureText(IVXCharBuffer* text) override { return storeFailureText(text); }

private:
    const Reference<Context> m_context;
    TcpListener m_listener;
    const int m_timeout;
};

class Connector final : public net::vorb::AbstractConnector, public vorb::IVXFailureText {
public:
    Connector(const TcpSettings& settings, Reference<Context> context)
        : m_settings(settings)
        , m_context(std::move(context))
    {
    }

    VX_OBJECT_UNKNOWN(AbstractConnector)
    static const vorb::InterfaceData* GetComIntfMap()
    {
        static const vorb::InterfaceData map[]
            = {vorb::viewRow<Connector, vorb::IVXFailureText>(), vorb::forwardRow<AbstractConnector>(), vorb::endRow()};
        return map;
    }

    // IVXConnector2
    std::int32_t Connect(const _GUID& iid, void** result) override
    {
        return withFailureText([&] { return AbstractConnector::Connect(iid, result); });
    }

    // IConnector
    Reference<io::IChannel> connect() override
    {
        const String place = placeOf(m_settings);
        const Reference<net::TcpSocketHandle> socket
            = during(u"connect to", place, [&] { return connectTcp(m_settings); });
        const Reference<TlsChannel> channel
            = inModule(GetComModule(), new TlsChannel(socket, m_context->newSession(), m_settings.timeout, place));
        channel->shakeHands();
        return channel;
    }

    // IVXFailureText
    std::int32_t GetFailureText(IVXCharBuffer* text) override { return storeFailureText(text); }

private:
    const TcpSettings m_settings;
    const Reference<Context> m_context;
};

} // namespace

const vorb::InterfaceData* TlsTransport::GetComIntfMap()
{
    static const vorb::InterfaceData map[] = {vorb::viewRow<TlsTransport, IVXTls>(),
        vorb::viewRow<TlsTransport, vorb::IVXFailureText>(), vorb::forwardRow<AbstractTransport>(), vorb::endRow()};
    return map;
}

std::int32_t TlsTransport::CreateAcceptor(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
{
    return withFailureText([&] { return AbstractTransport::CreateAcceptor(properties, iid, result); });
}

std::int32_t TlsTransport::CreateConnector(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
{
    return withFailureText([&] { return AbstractTransport::CreateConnector(properties, iid, result); });
}

Reference<net::IConnector> TlsTransport::createConnector(const util::PropertySet& properties)
{
    const TcpSettings settings(properties);
    if (settings.port == 0)
        throw ResultException(RESULT_INVALID_ARGUMENT, u"no port to connect to");
    const Reference<Context> context = inModule(GetComModule(), new Context(Context::Side::CLIENT, properties));
    return inModule(GetComModule(), new Connector(settings, context));
}

Reference<net::IAcceptor> TlsTransport::createAcceptor(const util::PropertySet& properties)
{
    const TcpSettings settings(properties);
    const Reference<Context> context = inModule(GetComModule(), new Context(Context::Side::SERVER, properties));
    const Reference<Acceptor> acceptor = during(
        u"listen at", [&] { return placeOf(settings); },
        [&] { return inModule(GetComModule(), new Acceptor(settings, context)); });
    if (settings.port == 0)
        storePort(properties, acceptor->port());
    return acceptor;
}

std::int32_t TlsTransport::CreateClientContext(
    const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
{
    return createContext(Context::Side::CLIENT, properties, iid, result);
}

std::int32_t TlsTransport::CreateServerContext(
    const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
{
    return createContext(Context::Side::SERVER, properties, iid, result);
}

std::int32_t TlsTransport::GetFailureText(IVXCharBuffer* text)
{
    return storeFailureText(text);
}

std::int32_t TlsTransport::createContext(
    Context::Side side, const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
{
    return createFrom(properties, iid, result,
        [&](const util::PropertySet& set) { return inModule(GetComModule(), new Context(side, set)); });
}

} // namespace vx::components
