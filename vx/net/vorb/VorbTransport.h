#pragma once

#include "vx/Object.h"
#include "vx/net/ITransport.h"
#include "vx/net/vorb/IVXTransport.h"

namespace vx::net::vorb {

// Give component transports the class operations. A negative result throws ResultException.

/// An acceptor of a component.
class VX_API VorbAcceptor : public Object, public IAcceptor {
public:
    /// Keeps a reference on `acceptor`. Throws ResultException for null.
    explicit VorbAcceptor(IVXAcceptor* acceptor);
    ~VorbAcceptor() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)

    // IAcceptor
    Reference<io::IChannel> accept() override;

private:
    Reference<IVXAcceptor> m_acceptor;
};

/// A connector of a component.
class VX_API VorbConnector : public Object, public IConnector {
public:
    /// Keeps a reference on `connector`. Throws ResultException for null.
    explicit VorbConnector(IVXConnector2* connector);
    ~VorbConnector() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)

    // IConnector
    Reference<io::IChannel> connect() override;

private:
    Reference<IVXConnector2> m_connector;
};

/// The component gets the property set itself: a change by either side is visible to the other.
class VX_API VorbTransport : public Object, public ITransport {
public:
    /// Creates the component.
    explicit VorbTransport(const String& progId);
    ~VorbTransport() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)

    // ITransport
    Reference<IConnector> createConnector(const util::PropertySet& properties) override;
    Reference<IAcceptor> createAcceptor(const util::PropertySet& properties) override;

private:
    Reference<IVXTransport> m_transport;
};

} // namespace vx::net::vorb
