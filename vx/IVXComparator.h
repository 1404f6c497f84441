#pragma once

#include "vx/IVXUnknown.h"

/// Defines order, equality and hash of the elements of a collection.
class VX_API IVXComparator : public IVXUnknown {
public:
    using InterfaceType = IVXComparator;
    static constexpr _GUID IID {0x176573E2, 0xC217, 0x4F04, {0xAD, 0x8E, 0xE6, 0x77, 0xCA, 0x68, 0x32, 0x45}};

    /// `*result` is below 0, 0 or above 0 if `a` sorts before, equal to or after `b`. Either may be null.
    virtual std::int32_t Compare(const IVXUnknown* a, const IVXUnknown* b, int* result) const = 0;
    /// Elements that compare as 0 have equal hashes.
    virtual std::int32_t Hash(const IVXUnknown* a, std::uint32_t* result) const = 0;

protected:
    ~IVXComparator() = default;
};
