#include "vxsys/Defaults.h"

#include "vxsys/Result.h"
#include "vxsys/detail/EncodingName.h"

#include <algorithm>
#include <atomic>
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

constexpr std::int32_t NAME_SIZE = 64; ///< of the name of an encoding that is stored
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

/// Where the strings of the environment were when a thread last looked. `setenv`, `putenv`, `unsetenv`, `clearenv` and an
/// assignment to `environ` each change at least one of these places. Comparing all of them takes less time than looking
/// up one variable.
///
/// All threads share it, and none waits: a reader that meets a writer only learns that the state is unknown. The loads
/// of the places acquire, so that the version is read again after them.
class EnvironmentPlaces {
public:
    static constexpr std::uint32_t UNKNOWN = 0;

    /// The number of the state that was stored last if the environment is still in that state, otherwise UNKNOWN.
    std::uint32_t current() const noexcept
    {
        const std::uint32_t version = m_version.load(std::memory_order_acquire);
        const char* const* const array = ::environ;
        if (version % 2 != 0 || array != m_array.load(std::memory_order_acquire))
            return UNKNOWN;
        // No stored place is null, so each place that is the same is followed by another one: nothing is read after the
        // end, also if another thread stores a new state meanwhile.
        const auto isSame
            = [&](std::size_t index) { return m_places[index].load(std::memory_order_acquire) == array[index]; };
        const std::size_t count = m_count.load(std::memory_order_acquire);
        std::size_t index = 0;
        for (; index + 8 <= count; index += 8) {
            if (!(isSame(index) && isSame(index + 1) && isSame(index + 2) && isSame(index + 3) && isSame(index + 4)
                    && isSame(index + 5) && isSame(index + 6) && isSame(index + 7)))
                return UNKNOWN;
        }
        for (; index < count; ++index) {
            if (!isSame(index))
                return UNKNOWN;
        }
        if (array != nullptr && stampOf(array + count) != m_stampOfRest.load(std::memory_order_acquire))
            return UNKNOWN;
        return m_version.load(std::memory_order_relaxed) == version ? version : UNKNOWN;
    }

    /// Stores the present state and returns its number. UNKNOWN if another thread does the same at the moment.
    std::uint32_t take() noexcept
    {
        std::uint32_t version = m_version.load(std::memory_order_relaxed);
        if (version % 2 != 0 || !m_version.compare_exchange_strong(version, version + 1, std::memory_order_acquire))
            return UNKNOWN;
        const char* const* const array = ::environ;
        std::size_t count = 0;
        for (; array != nullptr && count < std::size(m_places) && array[count] != nullptr; ++count)
            m_places[count].store(array[count], std::memory_order_release);
        m_array.store(array, std::memory_order_release);
        m_count.store(count, std::memory_order_release);
        m_stampOfRest.store(array != nullptr ? stampOf(array + count) : 0, std::memory_order_release);
        version += version + 2 != UNKNOWN ? 2 : 4;
        m_version.store(version, std::memory_order_release);
        return version;
    }

private:
    /// A number computed from the places of an array that ends with null.
    static std::uint64_t stampOf(const char* const* array) noexcept
    {
        constexpr std::uint64_t STEP = 0x9E37'79B9'7F4A'7C16; // even: the weights below are odd
        std::uint64_t stamp = 1;
        std::uint64_t weight = 1;
        for (; *array != nullptr; ++array, weight += STEP)
            stamp += reinterpret_cast<std::uintptr_t>(*array) * weight;
        return stamp;
    }

    std::atomic<std::uint32_t> m_version {UNKNOWN}; ///< odd while a thread stores a state
    std::atomic<const char* const*> m_array {nullptr};
    std::atomic<std::size_t> m_count {0}; ///< of the places, without the null at the end
    std::atomic<std::uint64_t> m_stampOfRest {0}; ///< of the places that have no room here
    std::atomic<const char*> m_places[250] {};
};

constinit EnvironmentPlaces g_environment {};

/// The encoding of the last locale. It is stored because opening a locale takes longer than converting most texts.
class LastEncoding {
public:
    /// The name of the locale that the environment demands now; "" if it names none. The strings of the variables are
    /// read each time, because a program may change a string that it has passed to putenv.
    const char* localeNow() noexcept
    {
        const std::uint32_t state = g_environment.current();
        if (state == EnvironmentPlaces::UNKNOWN || state != m_state)
            look(state);
        for (const char* value : m_values) {
            if (value != nullptr && *value != '\0')
                return value;
        }
        return "";
    }

    bool isOf(const char* locale) const noexcept { return m_isKnown && std::strcmp(m_locale, locale) == 0; }
    bool isUtf8() const noexcept { return m_isUtf8; }

    void keep(std::string_view locale, std::u16string_view encoding) noexcept
    {
        m_isKnown = locale.size() < sizeof m_locale && !encoding.empty() && encoding.size() < std::size(m_encoding);
        if (m_isKnown) {
            *std::copy(locale.begin(), locale.end(), m_locale) = '\0';
            m_length = encoding.copy(m_encoding, encoding.size());
            m_encoding[m_length] = 0;
            m_isUtf8 = vxsys::isNameOfUtf8(m_encoding);
        }
    }

    std::int32_t write(char16_t* name, std::int32_t size) const noexcept
    {
        constexpr std::size_t SHORT = 8; // most names are shorter: a fixed number of units needs no call
        if (m_length < SHORT && static_cast<std::size_t>(size) >= SHORT) {
            std::memcpy(name, m_encoding, SHORT * sizeof(char16_t));
            return RESULT_OK;
        }
        if (m_length >= static_cast<std::size_t>(size)) {
            *name = 0;
            return RESULT_BUFFER_TOO_SMALL;
        }
        std::copy_n(m_encoding, m_length + 1, name);
        return RESULT_OK;
    }

private:
    [[gnu::noinline]] void look(std::uint32_t state) noexcept
    {
        m_state = state != EnvironmentPlaces::UNKNOWN ? state : g_environment.take();
        for (std::size_t index = 0; index < std::size(VARIABLES); ++index)
            m_values[index] = std::getenv(VARIABLES[index]);
    }

    static constexpr const char* VARIABLES[] = {"LC_ALL", "LC_CTYPE", "LANG"};

    bool m_isKnown;
    bool m_isUtf8;
    std::uint32_t m_state; ///< of the environment when the values were looked up
    const char* m_values[std::size(VARIABLES)];
    char m_locale[64];
    char16_t m_encoding[NAME_SIZE];
    std::size_t m_length;
};

constinit thread_local LastEncoding s_lastEncoding {};

LastEncoding& lastEncoding() noexcept
{
    LastEncoding* last = &s_lastEncoding;
    asm("" : "+r"(last)); // a compiler that knows what it points to asks for the thread's object again at each use
    return *last;
}

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

/// Asks the system for the encoding of the locale that the environment names.
[[gnu::noinline]] std::int32_t writeEncodingOf(
    const char* environment, LastEncoding& last, char16_t* name, std::int32_t size) noexcept
{
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

} // namespace

std::int32_t VXGetDefaultCharEncoding(char16_t* name, std::int32_t size) noexcept
{
    if (name == nullptr || size < 1)
        return RESULT_INVALID_ARGUMENT;
    LastEncoding& last = lastEncoding();
    const char* const environment = last.localeNow();
    return last.isOf(environment) ? last.write(name, size) : writeEncodingOf(environment, last, name, size);
}

std::int32_t VXIsDefaultCharEncodingUtf8() noexcept
{
    LastEncoding& last = lastEncoding();
    const char* const environment = last.localeNow();
    if (last.isOf(environment))
        return last.isUtf8() ? 1 : 0;
    char16_t name[NAME_SIZE];
    return !failed(writeEncodingOf(environment, last, name, NAME_SIZE)) && vxsys::isNameOfUtf8(name) ? 1 : 0;
}

std::int32_t VXGetDefaultLocale(char16_t* name, std::int32_t size) noexcept
{
    if (name == nullptr || size < 1)
        return RESULT_INVALID_ARGUMENT;

    const std::string_view locale = localeOf({"LC_ALL", "LC_MESSAGES", "LANG"});
    const std::string_view text = locale.substr(0, locale.find_first_of(".@"));
    return writeName({isLocaleName(text) && text != "POSIX" ? text : FALLBACK_LOCALE}, name, size);
}
