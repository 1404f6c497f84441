#pragma once

#include "vx/util/ICharBuffer.h"

/// A language, a country and a variant. Each operation writes its text into the buffer. Display names are in the
/// language of the locale that is passed, or of the user.
class VX_API IVXLocale : public IVXUnknown {
public:
    using InterfaceType = IVXLocale;
    static constexpr _GUID IID {0xF5E59574, 0x1FAA, 0x4F07, {0x85, 0x83, 0xE2, 0xC2, 0x81, 0xC6, 0xF7, 0xE6}};

    virtual std::int32_t GetLanguage(IVXCharBuffer* text) = 0;
    virtual std::int32_t GetCountry(IVXCharBuffer* text) = 0;
    virtual std::int32_t GetVariant(IVXCharBuffer* text) = 0;
    virtual std::int32_t GetDisplayLanguage(IVXCharBuffer* text) = 0;
    virtual std::int32_t GetDisplayLanguageLoc(IVXCharBuffer* text, IVXLocale* inLocale) = 0;
    virtual std::int32_t GetDisplayCountry(IVXCharBuffer* text) = 0;
    virtual std::int32_t GetDisplayCountryLoc(IVXCharBuffer* text, IVXLocale* inLocale) = 0;
    virtual std::int32_t GetDisplayVariant(IVXCharBuffer* text) = 0;
    virtual std::int32_t GetDisplayVariantLoc(IVXCharBuffer* text, IVXLocale* inLocale) = 0;
    virtual std::int32_t GetDisplayName(IVXCharBuffer* text) = 0;
    virtual std::int32_t GetDisplayNameLoc(IVXCharBuffer* text, IVXLocale* inLocale) = 0;
    /// The name, "en_US@euro" for example.
    virtual std::int32_t ToString(IVXCharBuffer* text) = 0;

protected:
    ~IVXLocale() = default;
};
