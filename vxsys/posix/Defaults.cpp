#include "vxsys/Defaults.h"

#include "vxsys/Result.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <langinfo.h>
#include <locale.h>
#include <string_view>
#include <unistd.h>

namespace {

using namespace vxsys::results;

constexpr std::string_view FALLBACK_ENCODING = "UTF-8";
constexpr std::string_view FALLBACK_LOCALE = "en_US";

/// Names of plain ASCII, for which UTF-8 is used: a service that is started with an empty environment must not lose
/// text of its users.
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

/// Returns the first of `variables` that is set and not empty: POSIX defines this order.
std::string_view localeOf(std::initializer_list<const char*> variables) noexcept
{
    for (const char* variable : variables) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0')
            return value;
    }
    return {};
}

/// The encoding in the name of a locale: the text between "." and "@".
std::string_view encodingIn(std::string_view locale) noexcept
{
    const std::size_t point = locale.find('.');
    if (point == locale.npos)
        return {};
    locale.remove_prefix(point + 1);
    return locale.substr(0, locale.find('@'));
}

/// Whether `text` has the form of "de" or "de_AT": two to eight letters, and perhaps two letters or three digits after
/// "_" (BCP 47).
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

/// A number computed from the addresses of the environment's strings. It changes when a variable is set. Computing it
/// takes less time than looking up one variable.
std::uint64_t stampOfEnvironment() noexcept
{
    constexpr std::uint64_t STEP = 0x9E37'79B9'7F4A'7C16; // even: the weights below are odd
    std::uint64_t stamp = 0;
    std::uint64_t weight = 1;
    for (const char* const* entry = ::environ; entry != nullptr && *entry != nullptr; ++entry, weight += STEP)
        stamp += reinterpret_cast<std::uintptr_t>(*entry) * weight;
    return stamp;
}

/// The encoding of the last locale. It is stored because opening a locale takes longer than converting most texts.
struct LastEncoding {
    /// Also compares the name, because a program may change a string that it has passed to putenv.
    bool isCurrent() const noexcept
    {
        return isKnown && stamp == stampOfEnvironment() && (value == nullptr || std::strcmp(value, locale) == 0);
    }
    /// Whether `name` is still the name of the locale, although the environment has changed.
    bool remainsFor(std::string_view name) noexcept
    {
        if (!isKnown || name != locale)
            return false;
        value = name.data();
        stamp = stampOfEnvironment();
        return true;
    }

    void keep(std::string_view name, std::u16string_view found) noexcept
    {
        isKnown = name.size() < sizeof locale && !found.empty() && found.size() < std::size(encoding);
        if (isKnown) {
            *std::copy(name.begin(), name.end(), locale) = '\0';
            length = found.copy(encoding, found.size());
            value = name.data();
            stamp = stampOfEnvironment();
        }
    }

    bool isKnown;
    const char* value; ///< of the variable that decides; null if none does
    std::uint64_t stamp;
    char locale[64];
    char16_t encoding[64];
    std::size_t length;
};

constinit thread_local LastEncoding s_lastEncoding {};

std::int32_t writeName(std::initializer_list<std::string_view> texts, char16_t* name, std::int32_t size) noexcept
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

std::int32_t writeEncoding(std::string_view encoding, char16_t* name, std::int32_t size) noexcept
{
    constexpr std::string_view UNREGISTERED = "ISO8859-"; // the form in the locale names of X/Open

    if (encoding.empty() || !std::all_of(encoding.begin(), encoding.end(), isEncodingUnit)
        || std::find(std::begin(PLAIN_ASCII), std::end(PLAIN_ASCII), encoding) != std::end(PLAIN_ASCII))
        return writeName({FALLBACK_ENCODING}, name, size);
    if (encoding.starts_with(UNREGISTERED))
        return writeName({"ISO-8859-", encoding.substr(UNREGISTERED.size())}, name, size);
    return writeName({encoding}, name, size);
}

} // namespace

std::int32_t VXGetDefaultCharEncoding(char16_t* name, std::int32_t size) noexcept
{
    if (name == nullptr || size < 1)
        return RESULT_INVALID_ARGUMENT;

    LastEncoding& last = s_lastEncoding;
    std::string_view environment;
    if (last.isCurrent() || last.remainsFor(environment = localeOf({"LC_ALL", "LC_CTYPE", "LANG"}))) {
        if (last.length >= static_cast<std::size_t>(size)) {
            *name = 0;
            return RESULT_BUFFER_TOO_SMALL;
        }
        *std::copy_n(last.encoding, last.length, name) = 0;
        return RESULT_OK;
    }
    // Not the locale of the process, which belongs to the program and may not be set yet.
    const locale_t locale = ::newlocale(LC_CTYPE_MASK, "", nullptr);
    // A locale that is not installed has only its name.
    const std::string_view encoding = locale != nullptr ? ::nl_langinfo_l(CODESET, locale) : encodingIn(environment);
    const std::int32_t result = writeEncoding(encoding, name, size);
    last.keep(environment, name);
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
    return writeName({isLocaleName(text) && text != "POSIX" ? text : FALLBACK_LOCALE}, name, size);
}
