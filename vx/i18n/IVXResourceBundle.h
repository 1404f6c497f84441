#pragma once

#include "vx/i18n/IVXLocale.h"

/// Texts of one locale by key. Keys are zero-terminated.
class VX_API IVXResourceBundle : public IVXUnknown {
public:
    using InterfaceType = IVXResourceBundle;
    static constexpr _GUID IID {0x0861D18E, 0x197F, 0x4E3A, {0xA0, 0x3F, 0x7C, 0xD0, 0x2F, 0x9A, 0x5C, 0x75}};

    /// Negative for a missing key.
    virtual std::int32_t LoadCharBuffer(const char16_t* key, IVXCharBuffer* value) const = 0;
    /// `*length` is the size of `value` in units. All of them are written, the unused ones with 0. If the text with its
    /// terminator fits, `*length` becomes their length; otherwise it does not change, and the text is truncated.
    virtual std::int32_t LoadString(const char16_t* key, char16_t* value, std::uint32_t* length) const = 0;
    virtual std::int32_t GetCount(std::int32_t* count) const = 0;
    /// The key at `index`, and its text if `value` is not null.
    virtual std::int32_t GetResource(std::int32_t index, IVXCharBuffer* key, IVXCharBuffer* value) const = 0;
    /// With a reference for the caller. Null with success if the bundle has none.
    virtual std::int32_t GetLocale(IVXLocale** locale) const = 0;

protected:
    ~IVXResourceBundle() = default;
};
