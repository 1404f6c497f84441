#include "Messages.h"

#include "Component.h"
#include "Failure.h"
#include "Program.h"

#include <vx/TerminatedText.h>
#include <vx/i18n/Locale.h>
#include <vxsys/Component.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace vxtools {

using namespace vx;

namespace {

constexpr Message NO_SUCH_LANGUAGE {u"tools.no-such-language", "no messages can be read in this language"};

/// Those of BUNDLES beside English.
constexpr std::u16string_view LANGUAGES[] = {u"de", u"fr"};

/// "C" and "POSIX" are names of the locale without a language.
bool isEnglish(const String& language)
{
    constexpr std::u16string_view NAMES[] = {u"en", u"C", u"POSIX"};
    return std::ranges::find(NAMES, language.view()) != std::end(NAMES);
}

Text whyMissing(const String& language)
{
    if (std::ranges::find(LANGUAGES, language.view()) == std::end(LANGUAGES))
        return NO_SUCH_LANGUAGE();
    const String progId = String(u"Velmaris.Tools.StringBundle.") + language;
    Reference<IVXUnknown> bundle;
    const std::int32_t result
        = VXComCreateObjectByProgID(TerminatedText(progId), nullptr, &IVXUnknown::IID, bundle.outVoid());
    return noComponent(TerminatedText(progId), BUNDLES, result);
}

} // namespace

Messages::Messages(const char* program, std::optional<std::string> locale)
    : m_program(program)
    , m_locale(std::move(locale))
{
}

std::string Messages::say(const Text& text)
{
    if (!text.m_message)
        return text.m_plain;
    // Assembled as bytes, since file names need not be UTF-8.
    const std::string pattern = patternOf(*text.m_message);
    std::string said;
    std::string_view rest = pattern;
    for (std::size_t open; (open = rest.find('{')) != rest.npos;) {
        said += rest.substr(0, open);
        rest.remove_prefix(open);
        const auto index = rest.size() > 2 && rest[2] == '}' ? static_cast<std::size_t>(rest[1]) - '0' : rest.npos;
        if (index < text.m_values.size()) {
            said += say(text.m_values[index]);
            rest.remove_prefix(3);
        } else {
            said += '{';
            rest.remove_prefix(1);
        }
    }
    return said += rest;
}

void Messages::load(const std::string& name)
{
    String language;
    bool isMet = false;
    try {
        const Reference<i18n::Locale> locale(new i18n::Locale(TerminatedText(String(name))));
        language = locale->getLanguage();
        isMet = name.empty() || isEnglish(language);
        m_bundle = i18n::StringBundle::getBundle(u"Tools", locale.get());
        isMet = isMet || m_bundle->getLocale()->getLanguage() == language;
    } catch (...) { // no bundle, or no locale
    }
    if (!isMet)
        complain(m_program, say(Failure("--locale " + name, whyMissing(language)).text()));
}

std::string Messages::patternOf(const Message& message)
{
    try {
        if (m_locale)
            load(*std::exchange(m_locale, std::nullopt));
        if (m_bundle != nullptr)
            return m_bundle->getString(message.key).toUtf8();
    } catch (...) { // the message must appear even if its translation is broken
    }
    return message.english;
}

} // namespace vxtools
