#pragma once

#include "vx/Object.h"
#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/collections/Collection.h"
#include "vx/i18n/IVXResourceBundle.h"
#include "vx/i18n/Locale.h"

namespace vx::i18n {

/// The `IVXResourceBundle` view of `StringBundle`.
class VX_API StringBundleFace : public IVXResourceBundle {
public:
    std::int32_t LoadCharBuffer(const char16_t* key, IVXCharBuffer* value) const override;
    std::int32_t LoadString(const char16_t* key, char16_t* value, std::uint32_t* length) const override;
    /// These two give RESULT_NOT_IMPLEMENTED for all bundles but a `StringMapBundle`.
    std::int32_t GetCount(std::int32_t* count) const override;
    std::int32_t GetResource(std::int32_t index, IVXCharBuffer* key, IVXCharBuffer* value) const override;
    std::int32_t GetLocale(IVXLocale** locale) const override;

protected:
    StringBundleFace() = default;
    ~StringBundleFace() = default;
};

/// The translated strings of one locale by key. An empty string counts as missing.
class VX_API StringBundle : public Object, public StringBundleFace {
public:
    /// A new bundle `name` of the component that is registered for the locale, for one of its shorter forms
    /// (`de_AT@euro`, `de_AT`, `de`), for those of the default locale, or for en_US. `locale` may be null. Throws
    /// Exception "Resource not found" if there is none.
    static Reference<StringBundle> getBundle(const String& name, Locale* locale);

    StringBundle(const StringBundle&) = delete;
    StringBundle& operator=(const StringBundle&) = delete;
    ~StringBundle() noexcept(false) override;

    VX_OBJECT_UNKNOWN(Object)
    static const vorb::InterfaceData* GetComIntfMap();

    /// Throws Exception "Resource not found".
    virtual String getString(const String& key) const;
    /// Throws ResultException RESULT_NOT_IMPLEMENTED if the class has no list of its keys.
    virtual Reference<const collections::Collection<String>> getKeys() const;
    /// May be null.
    virtual Reference<Locale> getLocale() const;

protected:
    /// Keeps a reference on `locale`, which may be null.
    explicit StringBundle(Locale* locale);

    /// An empty text for a missing key.
    virtual String lookupString(const String& key) const = 0;

    Reference<Locale> m_locale;
    Reference<StringBundle> m_parent; ///< used for keys that are missing here; null unless a derived class sets it
};

} // namespace vx::i18n
