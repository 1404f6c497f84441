#include "vxsys/Defaults.h"

#include "vxsys/Result.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <initializer_list>
#include <langinfo.h>
#include <locale.h>
#include <string_view>

namespace {

using namespace vxsys::results;

constexpr std::string_view FALLBACK_ENCODING = "UTF-8";
constexpr std::string_view FALLBACK_LOCALE = "en_US";

/// Names of plain ASCII. A service started with an empty environment has no wish to lose its users' text.
constexpr std::string_view PLAIN_ASCII[] = {"ANSI_X3.4-1968", "US-ASCII", "ASCII"};

bool isLetter(char character) noexcept
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool isDigit(char character) noexcept
{
    return character >= '0' && character <= '9';
}

bool isEncodingUnit(char character) noexcept
{
    return isLetter(character) || isDigit(character)
        || std::string_view("-_.:+()").find(character) != std::string_view::npos;
}

/// The first of `variables` that is set and not empty decides, as everywhere in POSIX.
std::string_view localeOf(std::initializer_list<const char*> variables) noexcept
{
    for (const char* variable : variables) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0')
            return value;
    }
    return {};
}

/// What the name of a locale calls its encoding: the text between "." and "@".
std::string_view encodingIn(std::string_view locale) noexcept
{
    const std::size_t point = locale.find('.');
    if (point == locale.npos)
        return {};
    locale.remove_prefix(point + 1);
    return locale.substr(0, locale.find('@'));
}

/// Whether `text` has the form of "de" or "de_AT": a language of two to eight letters, a country of two letters or three
/// digits (BCP 47).
bool isLocaleName(std::string_view text) noexcept
{
    const std::string_view language = text.substr(0, text.find('_'));
    if (language.size() < 2 || language.size() > 8 || !std::all_of(language.begin(), language.end(), isLetter))
        return false;
    if (language.size() == text.size())
        return true;
    const std::string_view country = text.substr(language.size() + 1);
    return (country.size() == 2 && std::all_of(country.begin(), country.end(), isLetter))
        || (country.size() == 3 && std::all_of(country.begin(), country.end(), isDigit));
}

/// The encoding that a locale was last found to have. To open a locale for each text would cost more than the text.
struct LastEncoding {
    bool isOf(std::string_view name) const noexcept { return isKnown && name == locale; }

    void keep(std::string_view name, std::string_view found) noexcept
    {
        isKnown = name.size() < sizeof locale && found.size() < sizeof encoding;
        if (isKnown) {
            *std::copy(name.begin(), name.end(), locale) = '\0';
            *std::copy(found.begin(), found.end(), encoding) = '\0';
        }
    }

    bool isKnown;
    char locale[64];
    char encoding[64];
};

constinit thread_local LastEncoding s_lastEncoding {};

std::int32_t tell(std::initializer_list<std::string_view> texts, char16_t* name, std::int32_t size) noexcept
{
    char16_t* end = name;
    auto room = static_cast<std::size_t>(size) - 1;
    for (const std::string_view text : texts) {
        if (text.size() > room) {
            *name = 0;
            return RESULT_BUFFER_TOO_SMALL;
        }
        room -= text.size();
        end = std::copy(text.begin(), text.end(), end);
    }
    *end = 0;
    return RESULT_OK;
}

std::int32_t tellEncoding(std::string_view encoding, char16_t* name, std::int32_t size) noexcept
{
    constexpr std::string_view UNREGISTERED = "ISO8859-"; // how X/Open's locale names spell the family

    if (encoding.empty() || !std::all_of(encoding.begin(), encoding.end(), isEncodingUnit)
        || std::find(std::begin(PLAIN_ASCII), std::end(PLAIN_ASCII), encoding) != std::end(PLAIN_ASCII))
        return tell({FALLBACK_ENCODING}, name, size);
    if (encoding.starts_with(UNREGISTERED))
        return tell({"ISO-8859-", encoding.substr(UNREGISTERED.size())}, name, size);
    return tell({encoding}, name, size);
}

} // namespace

std::int32_t VXGetDefaultCharEncoding(char16_t* name, std::int32_t size) noexcept
{
    if (name == nullptr || size < 1)
        return RESULT_INVALID_ARGUMENT;

    const std::string_view environment = localeOf({"LC_ALL", "LC_CTYPE", "LANG"});
    if (s_lastEncoding.isOf(environment))
        return tellEncoding(s_lastEncoding.encoding, name, size);
    // The process's own locale is the program's affair and may not be set yet.
    const locale_t locale = ::newlocale(LC_CTYPE_MASK, "", nullptr);
    const std::string_view encoding = locale != nullptr ? ::nl_langinfo_l(CODESET, locale)
                                                        : encodingIn(environment); // not installed: its name is all
    s_lastEncoding.keep(environment, encoding);
    const std::int32_t result = tellEncoding(encoding, name, size);
    if (locale != nullptr)
        ::freelocale(locale);
    return result;
}

std::int32_t VXGetDefaultLocale(char16_t* name, std::int32_t size) noexcept
{
    if (name == nullptr || size < 1)
        return RESULT_INVALID_ARGUMENT;

    const std::string_view locale = localeOf({"LC_ALL", "LC_MESSAGES", "LANG"});
    const std::string_view text = locale.substr(0, locale.find_first_of(".@"));
    return tell({isLocaleName(text) && text != "POSIX" ? text : FALLBACK_LOCALE}, name, size);
}
