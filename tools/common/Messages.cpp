#include "Messages.h"

#include <vx/TerminatedText.h>
#include <vx/i18n/Locale.h>

#include <string_view>
#include <utility>

namespace vxtools {

using namespace vx;

Messages::Messages(std::optional<std::string> locale)
    : m_locale(std::move(locale))
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

std::string Messages::patternOf(const Message& message)
{
    try {
        if (m_locale) {
            const Reference<i18n::Locale> locale(new i18n::Locale(TerminatedText(String(*m_locale))));
            m_locale.reset();
            m_bundle = i18n::StringBundle::getBundle(u"Tools", locale.get());
        }
        if (m_bundle != nullptr)
            return m_bundle->getString(message.key).toUtf8();
    } catch (...) { // the message must appear even if its translation is broken
    }
    return message.english;
}

} // namespace vxtools
