#pragma once

#include "vx/IVXUnknown.h"
#include "vx/util/ICharBuffer.h"

#include <cstdint>

/// Makes connections from its properties. Results are negative for failure.
class VX_API IVXConnector : public IVXUnknown {
public:
    using InterfaceType = IVXConnector;
    static constexpr _GUID IID {0xAB2624C9, 0x2B4B, 0x4DD5, {0xB7, 0x6A, 0x77, 0xF5, 0xA9, 0x11, 0x4D, 0xAE}};

    /// The interface `iid` of a new connection, with a reference for the caller. `name` is ignored.
    virtual std::int32_t Connect(const char16_t* name, const _GUID& iid, void** result) = 0;
    virtual std::int32_t SetProperty(const char16_t* key, const char16_t* value) = 0;
    virtual std::int32_t GetProperty(const char16_t* key, IVXCharBuffer* value) const = 0;

protected:
    ~IVXConnector() = default;
};
