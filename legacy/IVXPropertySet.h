#pragma once

#include "legacy/IVXProperty.h"

#include <cstdint>

/// Properties by their keys. Results are negative for failure.
class VX_API IVXPropertySet : public IVXUnknown {
public:
    using InterfaceType = IVXPropertySet;
    static constexpr _GUID IID {0x283C8FB3, 0x0034, 0x423C, {0xBC, 0x61, 0x99, 0x6F, 0x88, 0x29, 0xCA, 0xF1}};

    /// Keys and texts are zero-terminated. A text result is copied into the buffer.
    virtual std::int32_t SetString(const char16_t* key, const char16_t* value) = 0;
    virtual std::int32_t GetString(const char16_t* key, IVXCharBuffer* value) const = 0;
    virtual std::int32_t SetLong(const char16_t* key, std::int32_t value) = 0;
    virtual std::int32_t GetLong(const char16_t* key, std::int32_t* value) const = 0;
    virtual std::int32_t SetDouble(const char16_t* key, double value) = 0;
    virtual std::int32_t GetDouble(const char16_t* key, double* value) const = 0;
    virtual std::int32_t GetCount(unsigned int* count) const = 0;
    /// `index` is below the count. Results, here and below, have a reference for the caller.
    virtual std::int32_t GetProperty(unsigned int index, IVXProperty** property) const = 0;
    virtual std::int32_t GetParent(IVXPropertySet** parent) const = 0;

protected:
    ~IVXPropertySet() = default;
};

/// As above, with any component as a value.
class VX_API IVXPropertySet2 : public IVXPropertySet {
public:
    using InterfaceType = IVXPropertySet2;
    static constexpr _GUID IID {0x11C372B2, 0xEEB2, 0x44BC, {0x8C, 0x61, 0xFC, 0xB0, 0x14, 0x5C, 0xC2, 0xD5}};

    virtual std::int32_t Set(const char16_t* key, IVXUnknown* value) = 0;
    /// The interface `iid` of the value, with a reference for the caller.
    virtual std::int32_t Get(const char16_t* key, const _GUID& iid, void** result) const = 0;
    virtual std::int32_t GetProperty2(unsigned int index, IVXProperty2** property) const = 0;
    virtual std::int32_t GetParent2(IVXPropertySet2** parent) const = 0;

protected:
    ~IVXPropertySet2() = default;
};
