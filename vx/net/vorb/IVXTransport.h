#pragma once

#include "vx/util/vorb/IPropertySet.h"

namespace vx::net::vorb {

// Connections to another party, as component interfaces. Results are the interface that the caller asks for, with a
// reference for the caller.

/// Waits for a party to connect.
class VX_API IVXAcceptor : public IVXUnknown {
public:
    using InterfaceType = IVXAcceptor;
    static constexpr _GUID IID {0x57092186, 0xCAA5, 0x4CCF, {0xAC, 0xA7, 0x3B, 0x82, 0xDD, 0xB6, 0xCA, 0x0E}};

    /// The result is a channel, `vx::io::vorb::IVXChannel` for example.
    virtual std::int32_t Accept(const _GUID& iid, void** result) = 0;

protected:
    ~IVXAcceptor() = default;
};

/// Connects to a party.
class VX_API IVXConnector2 : public IVXUnknown {
public:
    using InterfaceType = IVXConnector2;
    static constexpr _GUID IID {0x82DB3948, 0x42E3, 0x42B4, {0xBF, 0x80, 0xEC, 0x29, 0x40, 0x12, 0x83, 0x83}};

    /// The result is a channel, `vx::io::vorb::IVXChannel` for example.
    virtual std::int32_t Connect(const _GUID& iid, void** result) = 0;

protected:
    ~IVXConnector2() = default;
};

/// Creates both from properties. Each transport has its own keys.
class VX_API IVXTransport : public IVXUnknown {
public:
    using InterfaceType = IVXTransport;
    static constexpr _GUID IID {0x9D15C6B0, 0xED08, 0x4D46, {0xB6, 0x97, 0x8D, 0x00, 0xA5, 0x8F, 0x56, 0x60}};

    virtual std::int32_t CreateAcceptor(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
        = 0;
    virtual std::int32_t CreateConnector(const util::vorb::IPropertySet* properties, const _GUID& iid, void** result)
        = 0;

protected:
    ~IVXTransport() = default;
};

} // namespace vx::net::vorb
