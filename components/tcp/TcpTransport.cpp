#include "TcpTransport.h"

#include "../ComponentLibrary.h"
#include "Connections.h"

#include <vx/Exception.h>
#include <vx/io/Channels.h>
#include <vx/vorb/Boundary.h>
#include <vxsys/Socket.h>

namespace vx::components {

namespace {

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

/// The native socket lives as long as the streams in the channel, which keep `module` loaded.
Reference<io::IChannel> channelOf(net::TcpSocketHandle* socket, int timeout, vorb::Module* module)
{
    const Reference<Input> input = inModule(module, new Input(socket, timeout));
    const Reference<Output> output = inModule(module, new Output(socket, timeout));
    return io::Channels::adaptStreams(
        input.get(), output.get(), u"vx.net.tcp.socket=" + String::valueOf(socket->getSocket()));
}

class Acceptor final : public net::vorb::AbstractAcceptor {
public:
    explicit Acceptor(const TcpSettings& settings)
        : m_listener(settings)
        , m_timeout(settings.timeout)
    {
    }

    unsigned short port() const noexcept { return m_listener.port(); }

    // IVXAcceptor
    std::int32_t Accept(const _GUID& iid, void** result) override
    {
        return vorb::resultAtBoundary([&] { return AbstractAcceptor::Accept(iid, result); });
    }

    // IAcceptor
    Reference<io::IChannel> accept() override
    {
        const Reference<net::TcpSocketHandle> connection = m_listener.accept();
        limitWaits(*connection, m_timeout);
        return channelOf(connection.get(), m_timeout, GetComModule());
    }

private:
    TcpListener m_listener;
    const int m_timeout;
};

class Connector final : public net::vorb::AbstractConnector {
public:
    explicit Connector(const TcpSettings& settings)
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
        return channelOf(connectTcp(m_settings).get(), m_settings.timeout, GetComModule());
    }

private:
    const TcpSettings m_settings;
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
    const TcpSettings settings(properties);
    if (settings.port == 0)
        throw ResultException(RESULT_INVALID_ARGUMENT, u"no port to connect to");
    return inModule(GetComModule(), new Connector(settings));
}

Reference<net::IAcceptor> TcpTransport::createAcceptor(const util::PropertySet& properties)
{
    const TcpSettings settings(properties);
    const Reference<Acceptor> acceptor = inModule(GetComModule(), new Acceptor(settings));
    if (settings.port == 0)
        storePort(properties, acceptor->port());
    return acceptor;
}

} // namespace vx::components
