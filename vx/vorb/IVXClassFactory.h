#pragma once

#include "vx/IVXUnknown.h"

/// Makes the objects of one class.
class VX_API IVXClassFactory : public IVXUnknown {
public:
    using InterfaceType = IVXClassFactory;
    static constexpr _GUID IID {0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

    /// Creates an object and stores its interface `iid`, with a reference for the caller. With an aggregating `outer`,
    /// only the root interface may be requested.
    virtual std::int32_t CreateInstance(IVXUnknown* outer, const _GUID& iid, void** out) const = 0;
    /// Keeps the library loaded (not 0), or releases one such lock (0).
    virtual std::int32_t LockServer(std::int16_t lock) = 0;

protected:
    ~IVXClassFactory() = default;
};
