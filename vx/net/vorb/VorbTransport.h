#pragma once

#include "vx/Object.h"
#include "vx/net/ITransport.h"
#include "vx/net/vorb/IVXTransport.h"

namespace vx::net::vorb {

// Give component transports the class operations. A negative result throws ResultException.

/// The operations of `VorbAcceptor`, without the object.
class VX_API VorbAcceptorFace : public IAcceptor {
public:
    // IAcceptor
    Reference<io::IChannel> accept() override;

protected:
    explicit VorbAcceptorFace(IVXAcceptor* acceptor);
    ~VorbAcceptorFace();

private:
    Reference<IVXAcceptor> m_acceptor;
};

/// An acceptor of a component.
class VX_API VorbAcceptor : public Object, public VorbAcceptorFace {
public:
    /// Keeps a reference on `acceptor`. Throws ResultException for null.
    explicit VorbAcceptor(IVXAcceptor* acceptor);
    ~VorbAcceptor() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)
};

/// The operations of `VorbConnector`, without the object.
class VX_API VorbConnectorFace : public IConnector {
public:
    // IConnector
    Reference<io::IChannel> connect() override;

protected:
    explicit VorbConnectorFace(IVXConnector2* connector);
    ~VorbConnectorFace();

private:
    Reference<IVXConnector2> m_connector;
};

/// A connector of a component.
class VX_API VorbConnector : public Object, public VorbConnectorFace {
public:
    /// Keeps a reference on `connector`. Throws ResultException for null.
    explicit VorbConnector(IVXConnector2* connector);
    ~VorbConnector() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)
};

/// The operations of `VorbTransport`, without the object.
class VX_API VorbTransportFace : public ITransport {
public:
    // ITransport
    Reference<IConnector> createConnector(const util::PropertySet& properties) override;
    Reference<IAcceptor> createAcceptor(const util::PropertySet& properties) override;

protected:
    explicit VorbTransportFace(const String& progId);
    ~VorbTransportFace();

private:
    Reference<IVXTransport> m_transport;
};

/// The component gets the property set itself: a change by either side is visible to the other.
class VX_API VorbTransport : public Object, public VorbTransportFace {
public:
    /// Creates the component.
    explicit VorbTransport(const String& progId);
    ~VorbTransport() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)
};

} // namespace vx::net::vorb
