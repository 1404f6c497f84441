#pragma once

#include "vx/IVXUnknown.h"
#include "vx/vorb/InterfaceData.h"

namespace vx::util::vorb {

using vx::vorb::InterfaceData; // which sources of vx/util use as `vorb::InterfaceData`

/// Properties that are passed between components. Keys are zero-terminated. Values are components; a text is a
/// component with `IVXCharBuffer`.
class VX_API IPropertySet : public IVXUnknown {
public:
    using InterfaceType = IPropertySet;
    static constexpr _GUID IID {0x6FCCA1A2, 0x5532, 0x4EB8, {0xB8, 0xE0, 0x20, 0xD4, 0xFB, 0x66, 0x23, 0xD6}};

    virtual std::int32_t Set(const char16_t* key, IVXUnknown* value) = 0;
    /// The value's interface `iid`, with a reference for the caller.
    virtual std::int32_t Get(const char16_t* key, const _GUID& iid, void** result) const = 0;
    /// The old value's interface `iid`, with a reference for the caller.
    virtual std::int32_t Remove(const char16_t* key, const _GUID& iid, void** result) = 0;
    /// The result is an `IPropertyKeyIterator`, if the set can be enumerated.
    virtual std::int32_t GetKeyIterator(const _GUID& iid, void** result) const = 0;

protected:
    ~IPropertySet() = default;
};

/// Iterates over the keys of a set.
class VX_API IPropertyKeyIterator : public IVXUnknown {
public:
    using InterfaceType = IPropertyKeyIterator;
    static constexpr _GUID IID {0xD9CFADA3, 0x8902, 0x422C, {0xB8, 0xC5, 0x54, 0x7A, 0xA0, 0x7E, 0xF6, 0xB0}};

    /// Not 0 after the last key.
    virtual std::int32_t IsAtEnd() = 0;
    /// The next key, as an `IVXCharBuffer` with a reference for the caller.
    virtual std::int32_t GetNext(const _GUID& iid, void** key) = 0;

protected:
    ~IPropertyKeyIterator() = default;
};

} // namespace vx::util::vorb
