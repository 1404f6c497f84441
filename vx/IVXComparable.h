#pragma once

#include "vx/IVXUnknown.h"

/// Order and hash of an object for components that do not know `vx::Object`.
class VX_API IVXComparable : public IVXUnknown {
public:
    using InterfaceType = IVXComparable;
    static constexpr _GUID IID {0x72038029, 0xFA65, 0x4255, {0xA9, 0x16, 0x1C, 0x56, 0x80, 0xAC, 0xFE, 0xBF}};

    /// `*result` is below 0, 0 or above 0 if this object sorts before, equal to or after `other`.
    virtual std::int32_t CompareTo(const IVXUnknown* other, int* result) = 0;
    virtual std::int32_t HashCode(std::uint32_t* result) = 0;

protected:
    ~IVXComparable() = default;
};
