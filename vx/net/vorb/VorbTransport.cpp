#include "vx/net/vorb/VorbTransport.h"

#include "vx/Exception.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/String.h"
#include "vx/TerminatedText.h"
#include "vx/io/Channels.h"
#include "vx/util/PropertySet.h"
#include "vx/vorb/FailureText.h"
#include "vxsys/Component.h"

namespace vx::net::vorb {

namespace {

/// The `Interface` that an operation of `component` returns. Success with a null result is a failure too.
template <class Interface, class Operation>
Reference<Interface> obtain(IVXUnknown& component, Operation&& operation)
{
    Reference<Interface> object;
    vx::vorb::throwIfFailedIn(component, operation(Interface::IID, object.outVoid()));
    if (object == nullptr)
        throwResult(RESULT_POINTER);
    return object;
}

template <class Component>
Reference<io::IChannel> channelOf(Component& component, std::int32_t (Component::*open)(const _GUID&, void**))
{
    return io::Channels::adaptVorbChannel(obtain<io::vorb::IVXChannel>(component, [&](const _GUID& iid, void** out) {
        return (component.*open)(iid, out);
    }).get());
}

template <class Product>
Reference<Product> create(IVXTransport& transport, const util::PropertySet& properties,
    std::int32_t (IVXTransport::*make)(const util::vorb::IPropertySet*, const _GUID&, void**))
{
    const Reference<const util::vorb::IPropertySet> shared = util::PropertySet::getVorb(properties);
    return obtain<Product>(
        transport, [&](const _GUID& iid, void** out) { return (transport.*make)(shared.get(), iid, out); });
}

} // namespace

VorbAcceptorFace::VorbAcceptorFace(IVXAcceptor* acceptor)
    : m_acceptor(acceptor)
{
    if (acceptor == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

VorbAcceptorFace::~VorbAcceptorFace() = default;

Reference<io::IChannel> VorbAcceptorFace::accept()
{
    return channelOf(*m_acceptor, &IVXAcceptor::Accept);
}

VorbConnectorFace::VorbConnectorFace(IVXConnector2* connector)
    : m_connector(connector)
{
    if (connector == nullptr)
        throwResult(RESULT_INVALID_ARGUMENT);
}

VorbConnectorFace::~VorbConnectorFace() = default;

Reference<io::IChannel> VorbConnectorFace::connect()
{
    return channelOf(*m_connector, &IVXConnector2::Connect);
}

VorbTransportFace::VorbTransportFace(const String& progId)
{
    during(u"create transport", progId, [&] {
        throwIfFailed(
            VXComCreateObjectByProgID(SystemName(progId), nullptr, &IVXTransport::IID, m_transport.outVoid()));
    });
}

VorbTransportFace::~VorbTransportFace() = default;

Reference<IConnector> VorbTransportFace::createConnector(const util::PropertySet& properties)
{
    return new VorbConnector(create<IVXConnector2>(*m_transport, properties, &IVXTransport::CreateConnector).get());
}

Reference<IAcceptor> VorbTransportFace::createAcceptor(const util::PropertySet& properties)
{
    return new VorbAcceptor(create<IVXAcceptor>(*m_transport, properties, &IVXTransport::CreateAcceptor).get());
}

VorbAcceptor::VorbAcceptor(IVXAcceptor* acceptor)
    : VorbAcceptorFace(acceptor)
{
}

VorbAcceptor::~VorbAcceptor() noexcept(false) = default;

VorbConnector::VorbConnector(IVXConnector2* connector)
    : VorbConnectorFace(connector)
{
}

VorbConnector::~VorbConnector() noexcept(false) = default;

VorbTransport::VorbTransport(const String& progId)
    : VorbTransportFace(progId)
{
}

VorbTransport::~VorbTransport() noexcept(false) = default;

} // namespace vx::net::vorb
