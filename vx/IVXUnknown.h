#pragma once

#include "vx/Api.h"
#include "vxsys/Guid.h"

#include <cstdint>

/// Root of all component interfaces: identity and lifetime. Every other interface derives from it and appends its
/// operations behind these three; none has data, and none throws across a call.
class VX_API IVXUnknown {
public:
    using InterfaceType = IVXUnknown;
    static constexpr _GUID IID {0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

    /// On success 0, and `*out` is the interface, counted for the caller. RESULT_NO_INTERFACE and null where the object
    /// lacks it, RESULT_POINTER for a null `out`. Asking for `IVXUnknown` gives one pointer, whichever interface is asked:
    /// it is the object's identity.
    virtual std::int32_t QueryInterface(const _GUID& iid, void** out) = 0;
    /// The new count.
    virtual std::uint32_t AddRef() const = 0;
    /// The new count; at 0 the object is gone.
    virtual std::uint32_t Release() const = 0;

protected:
    ~IVXUnknown() = default;
};
