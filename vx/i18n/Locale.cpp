#include "vx/i18n/Locale.h"

#include "vx/Exception.h"
#include "vx/TerminatedText.h"
#include "vx/detail/CompareAs.h"
#include "vx/util/CopyCharBuffer.h"
#include "vx/vorb/Boundary.h"
#include "vxsys/Defaults.h"

#include <iterator>

namespace vx::i18n {

namespace {

using DisplayText = String (Locale::*)(Locale*) const;

std::int32_t copyAtBoundary(IVXCharBuffer* target, const String& text)
{
    return vorb::atBoundary([&] { util::copyText(target, text); });
}

std::int32_t copyDisplay(LocaleFace& face, IVXCharBuffer* target, DisplayText get)
{
    return vorb::atBoundary([&] { util::copyText(target, (static_cast<Locale&>(face).*get)(nullptr)); });
}

std::int32_t copyDisplay(LocaleFace& face, IVXCharBuffer* target, IVXLocale* inLocale, DisplayText get)
{
    return vorb::atBoundary([&] {
        if (inLocale == nullptr)
            throwResult(RESULT_POINTER);
        const Reference<String> name(new String);
        throwIfFailed(inLocale->ToString(name.get()));
        const Reference<Locale> in(new Locale(TerminatedText(*name)));
        util::copyText(target, (static_cast<Locale&>(face).*get)(in.get()));
    });
}

/// Empty if `end` is before `start`.
String part(std::u16string_view text, std::size_t start, std::size_t end)
{
    return start < end ? String(text.substr(start, end - start)) : String();
}

} // namespace

std::int32_t LocaleFace::GetLanguage(IVXCharBuffer* text)
{
    return copyAtBoundary(text, static_cast<Locale&>(*this).getLanguage());
}

std::int32_t LocaleFace::GetCountry(IVXCharBuffer* text)
{
    return copyAtBoundary(text, static_cast<Locale&>(*this).getCountry());
}

std::int32_t LocaleFace::GetVariant(IVXCharBuffer* text)
{
    return copyAtBoundary(text, static_cast<Locale&>(*this).getVariant());
}

std::int32_t LocaleFace::GetDisplayLanguage(IVXCharBuffer* text)
{
    return copyDisplay(*this, text, &Locale::getDisplayLanguage);
}

std::int32_t LocaleFace::GetDisplayLanguageLoc(IVXCharBuffer* text, IVXLocale* inLocale)
{
    return copyDisplay(*this, text, inLocale, &Locale::getDisplayLanguage);
}

std::int32_t LocaleFace::GetDisplayCountry(IVXCharBuffer* text)
{
    return copyDisplay(*this, text, &Locale::getDisplayCountry);
}

std::int32_t LocaleFace::GetDisplayCountryLoc(IVXCharBuffer* text, IVXLocale* inLocale)
{
    return copyDisplay(*this, text, inLocale, &Locale::getDisplayCountry);
}

std::int32_t LocaleFace::GetDisplayVariant(IVXCharBuffer* text)
{
    return copyDisplay(*this, text, &Locale::getDisplayVariant);
}

std::int32_t LocaleFace::GetDisplayVariantLoc(IVXCharBuffer* text, IVXLocale* inLocale)
{
    return copyDisplay(*this, text, inLocale, &Locale::getDisplayVariant);
}

std::int32_t LocaleFace::GetDisplayName(IVXCharBuffer* text)
{
    return copyDisplay(*this, text, &Locale::getDisplayName);
}

std::int32_t LocaleFace::GetDisplayNameLoc(IVXCharBuffer* text, IVXLocale* inLocale)
{
    return copyDisplay(*this, text, inLocale, &Locale::getDisplayName);
}

std::int32_t LocaleFace::ToString(IVXCharBuffer* text)
{
    return copyAtBoundary(text, static_cast<Locale&>(*this).Locale::toString()); // whatever a derived class prints
}

Locale::Locale(const char16_t* language, const char16_t* country, const char16_t* variant)
    : m_language(language)
    , m_country(country)
    , m_variant(variant)
{
    initName();
}

Locale::Locale(const char16_t* name)
{
    // Each separator is searched in the whole text.
    const std::u16string_view text = name != nullptr ? name : u"";
    const std::size_t country = text.find(u'_');
    const std::size_t codeSet = text.find(u'.');
    const std::size_t variant = text.find(u'@');
    std::size_t end = text.size();
    if (variant != text.npos) {
        m_variant = text.substr(variant + 1);
        end = variant;
    }
    if (codeSet != text.npos)
        end = codeSet;
    if (country != text.npos) {
        m_country = part(text, country + 1, end);
        end = country;
    }
    m_language = text.substr(0, end);
    initName();
}

Locale::Locale(const Locale& other) noexcept = default;

Locale& Locale::operator=(const Locale& other)
{
    m_language = other.m_language;
    m_country = other.m_country;
    m_variant = other.m_variant;
    m_name = other.m_name;
    return *this;
}

Locale::~Locale() noexcept = default;

const vorb::InterfaceData* Locale::GetComIntfMap()
{
    static const vorb::InterfaceData map[]
        = {vorb::viewRow<Locale, IVXLocale>(), vorb::forwardRow<Object>(), vorb::endRow()};
    return map;
}

Reference<Locale> Locale::getDefault()
{
    char16_t name[40] = {};
    throwIfFailed(VXGetDefaultLocale(name, std::size(name)));
    return new Locale(name);
}

String Locale::getLanguage() const
{
    return m_language;
}

String Locale::getCountry() const
{
    return m_country;
}

String Locale::getVariant() const
{
    return m_variant;
}

String Locale::getDisplayLanguage(Locale*) const
{
    throw Exception();
}

String Locale::getDisplayCountry(Locale*) const
{
    throw Exception();
}

String Locale::getDisplayVariant(Locale*) const
{
    throw Exception();
}

String Locale::getDisplayName(Locale*) const
{
    throw Exception();
}

int Locale::compareTo(const Object& other) const
{
    return vx::detail::compareAs<Locale>(
        *this, other, [&](const Locale& locale) { return m_name.compare(locale.m_name); });
}

bool Locale::equals(const Object& other) const
{
    if (&other == this)
        return true;
    const auto* locale = dynamic_cast<const Locale*>(&other);
    return locale != nullptr && m_name.equals(locale->m_name);
}

String Locale::toString() const
{
    return m_name;
}

void Locale::initName()
{
    m_name = m_language;
    if (!m_country.isEmpty())
        m_name.append(u'_').append(m_country);
    if (!m_variant.isEmpty())
        m_name.append(u'@').append(m_variant);
}

} // namespace vx::i18n
