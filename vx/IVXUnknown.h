#pragma once

#include "vx/Api.h"
#include "vxsys/Guid.h"

#include <cstdint>

/// Root of all component interfaces: identity and lifetime. Every other interface derives from it and appends its
/// operations after these three. Interfaces have no data, and their operations do not throw.
class VX_API IVXUnknown {
public:
    using InterfaceType = IVXUnknown;
    static constexpr _GUID IID {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

    /// Stores the interface `iid` in `*out`, with a reference for the caller, and returns 0. RESULT_NO_INTERFACE and
    /// null if the object does not have it, RESULT_POINTER for a null `out`. A query for `IVXUnknown` gives the same
    /// pointer for every interface of an object: it is the identity of the object.
    virtual std::int32_t QueryInterface(const _GUID& iid, void** out) = 0;
    /// Returns the new count.
    virtual std::uint32_t AddRef() const = 0;
    /// Returns the new count. At 0 the object has been destroyed.
    virtual std::uint32_t Release() const = 0;

protected:
    ~IVXUnknown() = default;
};
