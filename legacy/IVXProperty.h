#pragma once

#include "vx/IVXUnknown.h"
#include "vx/util/ICharBuffer.h"

#include <cstdint>

/// A key with a value that is read and written as text or as a number. Results are negative for failure.
class VX_API IVXProperty : public IVXUnknown {
public:
    using InterfaceType = IVXProperty;
    static constexpr _GUID IID {0x14B4005F, 0x4168, 0x4BBC, {0xBA, 0x90, 0x3C, 0x67, 0x49, 0xF1, 0x20, 0x95}};

    /// Text results are copied into the buffer. Text arguments are zero-terminated.
    virtual std::int32_t GetKey(IVXCharBuffer* key) const = 0;
    virtual std::int32_t GetValueString(IVXCharBuffer* value) const = 0;
    virtual std::int32_t GetValueLong(std::int32_t* value) const = 0;
    virtual std::int32_t GetValueDouble(double* value) const = 0;
    virtual std::int32_t SetValueString(const char16_t* value) = 0;
    virtual std::int32_t SetValueLong(std::int32_t value) = 0;
    virtual std::int32_t SetValueDouble(double value) = 0;

protected:
    ~IVXProperty() = default;
};

/// As above, with any component as the value.
class VX_API IVXProperty2 : public IVXProperty {
public:
    using InterfaceType = IVXProperty2;
    static constexpr _GUID IID {0x247518DB, 0x853C, 0x4F28, {0x9E, 0x39, 0x83, 0xC9, 0x1C, 0x00, 0xF8, 0xE2}};

    /// The interface `iid` of the value, with a reference for the caller.
    virtual std::int32_t GetValue(const _GUID& iid, void** result) const = 0;
    /// Keeps a reference on the value.
    virtual std::int32_t SetValue(IVXUnknown* value) = 0;

protected:
    ~IVXProperty2() = default;
};
