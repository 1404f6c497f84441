#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/i18n/IVXLocale.h"

namespace vx::i18n {

/// The `IVXLocale` view of `Locale`.
class VX_API LocaleFace : public IVXLocale {
public:
    std::int32_t GetLanguage(IVXCharBuffer* text) override;
    std::int32_t GetCountry(IVXCharBuffer* text) override;
    std::int32_t GetVariant(IVXCharBuffer* text) override;
    std::int32_t GetDisplayLanguage(IVXCharBuffer* text) override;
    std::int32_t GetDisplayLanguageLoc(IVXCharBuffer* text, IVXLocale* inLocale) override;
    std::int32_t GetDisplayCountry(IVXCharBuffer* text) override;
    std::int32_t GetDisplayCountryLoc(IVXCharBuffer* text, IVXLocale* inLocale) override;
    std::int32_t GetDisplayVariant(IVXCharBuffer* text) override;
    std::int32_t GetDisplayVariantLoc(IVXCharBuffer* text, IVXLocale* inLocale) override;
    std::int32_t GetDisplayName(IVXCharBuffer* text) override;
    std::int32_t GetDisplayNameLoc(IVXCharBuffer* text, IVXLocale* inLocale) override;
    std::int32_t ToString(IVXCharBuffer* text) override;

protected:
    LocaleFace() = default;
    ~LocaleFace() = default;
};

/// A language, a country and a variant, each of which may be empty. Locales are compared by their names, with regard to
/// case; the hash, however, uses the address.
class VX_API Locale : public Object, public LocaleFace {
public:
    /// Null is an empty text.
    Locale(const char16_t* language, const char16_t* country, const char16_t* variant = nullptr);
    /// Parses "en_US.UTF-8@euro", of which all but the language may be missing. The code set is ignored.
    Locale(const char16_t* name);
    Locale(const Locale& other) noexcept;
    Locale& operator=(const Locale& other);
    ~Locale() noexcept override;

    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    /// The locale of the environment. Throws ResultException if the platform has none.
    static Reference<Locale> getDefault();

    String getLanguage() const;
    String getCountry() const;
    String getVariant() const;
    /// Display names are not available: these throw Exception.
    String getDisplayLanguage(Locale* inLocale) const;
    String getDisplayCountry(Locale* inLocale) const;
    String getDisplayVariant(Locale* inLocale) const;
    String getDisplayName(Locale* inLocale) const;

    // Object
    /// Throws CastFailedException for an `other` that is no Locale.
    int compareTo(const Object& other) const override;
    bool equals(const Object& other) const override;
    /// "en_US@euro", without the parts that are empty.
    String toString() const override;

private:
    void initName();

    String m_language;
    String m_country;
    String m_variant;
    String m_name;
};

} // namespace vx::i18n
