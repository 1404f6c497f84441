#pragma once

#include <vx/net/vorb/AbstractTransport.h>

namespace vx::components {

/// Channels over TCP. The properties:
///
/// - "host": where to connect or to listen; 127.0.0.1 without it. For an acceptor, "*" means all addresses.
/// - "port": a number. An acceptor with 0 or without a port chooses one and stores it in the set.
/// - "timeout": milliseconds. It limits how long a read waits for its first byte, a write for each time that the peer
///   accepts nothing, and connecting for each address of the host. Without it, or with 0, there is no limit. After a
///   time-out the result is VX_E_SOCKET_ETIMEDOUT. A read leaves the connection as it was; after a write it is not known
///   how much was sent. The look-up of a name takes as long as the system allows. `accept` has no limit: a server waits
///   for clients as long as it runs, and "timeout" limits how long each client can make it wait.
///
/// An invalid property throws Exception. Exceptions of acceptors and connectors become result codes here, because their
/// callers are components.
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
