#include "vx/i18n/StringBundle.h"

#include "vx/Exception.h"
#include "vx/TerminatedText.h"
#include "vx/detail/OwnModule.h"
#include "vx/i18n/ComStringBundle.h"
#include "vx/i18n/StringMapBundle.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/vorb/Boundary.h"
#include "vxsys/Component.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <limits>

namespace vx::i18n {

namespace {

constexpr const char16_t* NOT_FOUND = u"Resource not found";

/// Null if there is no component for exactly this locale.
Reference<StringBundle> tryLocale(const String& name, const String& locale)
{
    String progId(u"Velmaris.");
    progId.append(name).append(u".StringBundle.").append(locale);
    _GUID classId;
    if (!SystemName::isValid(progId) || failed(VXComClassIDFromProgID(TerminatedText(progId), &classId)))
        return nullptr;
    Reference<IVXResourceBundle> component;
    if (failed(VXModuleComCreateObject(
            vx::detail::getOwnModule(), &classId, nullptr, &IVXResourceBundle::IID, component.outVoid()))) {
        return nullptr;
    }
    return new ComStringBundle(component.get(), Reference<Locale>(new Locale(TerminatedText(locale))).get());
}

/// Tries the locale, then without its variant, then without its country.
Reference<StringBundle> search(const String& name, String locale)
{
    Reference<StringBundle> bundle = tryLocale(name, locale);
    for (const char16_t separator : {u'@', u'_'}) {
        const int cut = locale.indexOf(separator);
        if (bundle != nullptr || cut < 0)
            continue;
        locale.remove(cut);
        bundle = tryLocale(name, locale);
    }
    return bundle;
}

} // namespace

std::int32_t StringBundleFace::LoadCharBuffer(const char16_t* key, IVXCharBuffer* value) const
{
    return vorb::atBoundary([&] { util::copyText(value, static_cast<const StringBundle&>(*this).getString(key)); });
}

std::int32_t StringBundleFace::LoadString(const char16_t* key, char16_t* value, std::uint32_t* length) const
{
    if (value == nullptr || length == nullptr)
        return RESULT_POINTER;
    return vorb::atBoundary([&] {
        const String text = static_cast<const StringBundle&>(*this).getString(key);
        constexpr std::uint32_t MOST = std::numeric_limits<std::int32_t>::max();
        VXStrNCpyW(value, TerminatedText(text), static_cast<std::int32_t>(std::min(*length, MOST)));
        *length = std::min(*length, static_cast<std::uint32_t>(text.getLength()) + 1);
    });
}

std::int32_t StringBundleFace::GetCount(std::int32_t* count) const
{
    const auto* const listed = dynamic_cast<const StringMapBundle*>(this);
    return listed != nullptr ? listed->countKeys(count) : RESULT_NOT_IMPLEMENTED;
}

std::int32_t StringBundleFace::GetResource(std::int32_t index, IVXCharBuffer* key, IVXCharBuffer* value) const
{
    const auto* const listed = dynamic_cast<const StringMapBundle*>(this);
    return listed != nullptr ? listed->getResource(index, key, value) : RESULT_NOT_IMPLEMENTED;
}

std::int32_t StringBundleFace::GetLocale(IVXLocale** locale) const
{
    return vorb::atBoundary(locale, [&]() -> IVXLocale* {
        return Reference<IVXLocale>(static_cast<const StringBundle&>(*this).getLocale()).detach();
    });
}

Reference<StringBundle> StringBundle::getBundle(const String& name, Locale* locale)
{
    Reference<StringBundle> bundle;
    if (locale != nullptr)
        bundle = search(name, locale->toString());
    if (bundle == nullptr)
        bundle = search(name, Locale::getDefault()->toString());
    if (bundle == nullptr)
        bundle = search(name, u"en_US");
    if (bundle == nullptr)
        throw Exception(NOT_FOUND);
    return bundle;
}

StringBundle::StringBundle(Locale* locale)
    : m_locale(locale)
{
}

StringBundle::~StringBundle() noexcept(false) = default;

const vorb::InterfaceData* StringBundle::GetComIntfMap()
{
    static const vorb::InterfaceData map[]
        = {vorb::viewRow<StringBundle, IVXResourceBundle>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

String StringBundle::getString(const String& key) const
{
    String value = lookupString(key);
    if (value.isEmpty() && m_parent != nullptr)
        value = m_parent->getString(key);
    if (value.isEmpty())
        throw Exception(NOT_FOUND);
    return value;
}

Reference<const collections::Collection<String>> StringBundle::getKeys() const
{
    throwResult(RESULT_NOT_IMPLEMENTED);
}

Reference<Locale> StringBundle::getLocale() const
{
    return m_locale;
}

} // namespace vx::i18n
