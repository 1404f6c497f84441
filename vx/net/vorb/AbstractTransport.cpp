#include "vx/net/vorb/AbstractTransport.h"

#include "vx/Result.h"
#include "vx/util/vorb/VorbPropertySet.h"

namespace vx::net::vorb {

namespace {

/// The interface `iid` of what `make` returns; RESULT_FAIL if that is null.
template <class Make>
std::int32_t storeInterface(const _GUID& iid, void** result, Make&& make)
{
    if (result == nullptr)
        return RESULT_POINTER;
    *result = nullptr;
    const auto object = make();
    return object != nullptr ? object->QueryInterface(iid, result) : RESULT_FAIL;
}

/// As above, from properties.
template <class Make>
std::int32_t storeInterfaceFrom(
    const util::vorb::IPropertySet* properties, const _GUID& iid, void** result, Make&& make)
{
    if (properties == nullptr)
        return RESULT_POINTER;
    return storeInterface(iid, result, [&] {
        // The component decides whether its properties may be changed.
        const util::vorb::VorbPropertySet set(const_cast<util::vorb::IPropertySet*>(properties), nullptr);
        return make(set);
    });
}

} // namespace

AbstractAcceptor::~AbstractAcceptor() noexcept(false) = default;

const vx::vorb::InterfaceData* AbstractAcceptor::GetComIntfMap()
{
    static const vx::vorb::InterfaceData map[]
        = {vx::vorb::viewRow<AbstractAcceptor, IVXAcceptor>(), vx::vorb::endRow()};
    return map;
}

std::int32_t AbstractAcceptorFace::Accept(const _GUID& iid, void** result)
{
    return storeInterface(iid, result, [&] { return accept(); });
}

AbstractConnector::~AbstractConnector() noexcept(false) = default;

const vx::vorb::InterfaceData* AbstractConnector::GetComIntfMap()
{
    static const vx::vorb::InterfaceData map[]
        = {vx::vorb::viewRow<AbstractConnector, IVXConnector2>(), vx::vorb::endRow()};
    return map;
}

std::int32_t AbstractConnectorFace::Connect(const _GUID& iid, void** result)
{
    return storeInterface(iid, result, [&] { return connect(); });
}

AbstractTransport::~AbstractTransport() noexcept(false) = default;

const vx::vorb::InterfaceData* AbstractTransport::GetComIntfMap()
{
    static const vx::vorb::InterfaceData map[]
        = {vx::vorb::viewRow<AbstractTransport, IVXTransport>(), vx::vorb::endRow()};
    return map;
}

std::int32_t AbstractTransportFace::CreateAcceptor(
    const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
{
    return storeInterfaceFrom(
        properties, iid, result, [&](const util::PropertySet& set) { return createAcceptor(set); });
}

std::int32_t AbstractTransportFace::CreateConnector(
    const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
{
    return storeInterfaceFrom(
        properties, iid, result, [&](const util::PropertySet& set) { return createConnector(set); });
}

} // namespace vx::net::vorb
