#pragma once

#include <vx/net/vorb/AbstractTransport.h>

namespace vx::components {

/// Channels over TCP. The properties:
///
/// - "host": where to connect or to listen; 127.0.0.1 without it. An acceptor takes "*" for all addresses.
/// - "port": a number. An acceptor with 0 or without one picks a port and puts it into the set.
/// - "timeout": milliseconds that a read waits for its first byte, a write whenever the peer takes nothing, and connecting
///   for each address of the host; for ever without it or with 0. The result is VX_E_SOCKET_ETIMEDOUT then. Behind a read
///   the connection is as it was; behind a write nobody knows how much has gone. Looking up a name takes the time that the
///   system gives it, and accepting has no limit: a server waits for clients as long as it lives, and with "timeout" it
///   limits what each of them may keep it waiting.
///
/// A property that makes no sense throws Exception. What an acceptor and a connector throw is turned into results here, as
/// the callers are components.
class TcpTransport final : public net::vorb::AbstractTransport {
public:
    // IVXTransport
    std::int32_t CreateAcceptor(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result) override;
    std::int32_t CreateConnector(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result) override;

    // ITransport
    Reference<net::IConnector> createConnector(const util::PropertySet& properties) override;
    Reference<net::IAcceptor> createAcceptor(const util::PropertySet& properties) override;
};

} // namespace vx::components
