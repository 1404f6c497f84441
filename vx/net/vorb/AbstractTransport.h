#pragma once

#include "vx/Object.h"
#include "vx/net/ITransport.h"
#include "vx/net/vorb/IVXTransport.h"

namespace vx::net::vorb {

// Bases of transports: a derived class implements the class operations, and these classes implement the component
// operations by them. An exception of a class operation passes through the component operation.

/// The component of `AbstractAcceptor`, without the object.
class VX_API AbstractAcceptorFace : public IVXAcceptor, public IAcceptor {
public:
    // IVXAcceptor
    std::int32_t Accept(const _GUID& iid, void** result) override;

protected:
    AbstractAcceptorFace() = default;
    ~AbstractAcceptorFace() = default;
};

/// A derived class implements `accept`.
class VX_API AbstractAcceptor : public Object, public AbstractAcceptorFace {
public:
    AbstractAcceptor(const AbstractAcceptor&) = delete;
    AbstractAcceptor& operator=(const AbstractAcceptor&) = delete;
    ~AbstractAcceptor() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)
    static const vx::vorb::InterfaceData* GetComIntfMap();

protected:
    AbstractAcceptor() noexcept = default;
};

/// The component of `AbstractConnector`, without the object.
class VX_API AbstractConnectorFace : public IVXConnector2, public IConnector {
public:
    // IVXConnector2
    std::int32_t Connect(const _GUID& iid, void** result) override;

protected:
    AbstractConnectorFace() = default;
    ~AbstractConnectorFace() = default;
};

/// A derived class implements `connect`.
class VX_API AbstractConnector : public Object, public AbstractConnectorFace {
public:
    AbstractConnector(const AbstractConnector&) = delete;
    AbstractConnector& operator=(const AbstractConnector&) = delete;
    ~AbstractConnector() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)
    static const vx::vorb::InterfaceData* GetComIntfMap();

protected:
    AbstractConnector() noexcept = default;
};

/// The component of `AbstractTransport`, without the object.
class VX_API AbstractTransportFace : public IVXTransport, public ITransport {
public:
    // IVXTransport
    std::int32_t CreateAcceptor(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result) override;
    std::int32_t CreateConnector(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result) override;

protected:
    AbstractTransportFace() = default;
    ~AbstractTransportFace() = default;
};

/// The class operations get a property set that is valid during the call.
class VX_API AbstractTransport : public Object, public AbstractTransportFace {
public:
    AbstractTransport(const AbstractTransport&) = delete;
    AbstractTransport& operator=(const AbstractTransport&) = delete;
    ~AbstractTransport() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)
    static const vx::vorb::InterfaceData* GetComIntfMap();

protected:
    AbstractTransport() noexcept = default;
};

} // namespace vx::net::vorb
