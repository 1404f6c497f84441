#include "vx/String.h"

#include "vx/StringLiteral.h"
#include "vx/detail/InsertUtf8.h"
#include "vx/detail/TextRange.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <memory_resource>
#include <string>
#include <vector>

namespace vx {

namespace {

constexpr STRUCT_VX_STR_LIT_INFO TRUE_TEXT = literal(u"true");
constexpr STRUCT_VX_STR_LIT_INFO FALSE_TEXT = literal(u"false");
constexpr int SIGNIFICANT = 6; // digits of a floating-point number

/// Digits as std::to_chars makes them, which knows no locale.
template <class... Value>
String printed(Value... value)
{
    char digits[32];
    char* end = std::to_chars(digits, digits + sizeof digits, value...).ptr;
    char16_t text[sizeof digits];
    const char16_t* last = std::copy(digits, end, text);
    return String(text, static_cast<int>(last - text));
}

/// The number of the placeholder at the start of `text`, or -1. `*length` becomes the length of the placeholder.
int placeholderAt(std::u16string_view text, std::size_t* length) noexcept
{
    constexpr int LARGEST = 99999999;
    std::size_t index = 1; // after the brace
    int number = 0;
    while (index < text.size() && text[index] >= u'0' && text[index] <= u'9' && number <= LARGEST)
        number = number * 10 + (text[index++] - u'0');
    const bool isPrinted = index > 1 && (text[1] != u'0' || index == 2); // numbers as valueOf prints them
    if (!isPrinted || index >= text.size() || text[index] != u'}')
        return -1;
    *length = index + 1;
    return number;
}

struct Placeholder {
    std::size_t start;
    std::size_t length;
    std::size_t number;
};

/// The placeholders of a template in their order. A number so high that the template is too short for all lower ones is
/// no placeholder.
void findPlaceholders(std::u16string_view text, std::pmr::vector<Placeholder>& places)
{
    std::size_t length = 1;
    for (std::size_t at = text.find(u'{'); at != text.npos; at = text.find(u'{', at + length)) {
        length = 1;
        const int number = placeholderAt(text.substr(at), &length);
        if (number >= 0 && static_cast<std::size_t>(number) < text.size() / 3)
            places.push_back({at, length, static_cast<std::size_t>(number)});
    }
}

/// The number of placeholders 0, 1, 2 and so on that occur, up to the first that does not.
std::size_t countConsecutive(const std::pmr::vector<Placeholder>& places, std::pmr::memory_resource& memory)
{
    std::pmr::vector<char> seen(places.size(), &memory);
    for (const Placeholder& place : places) {
        if (place.number < seen.size())
            seen[place.number] = 1;
    }
    return static_cast<std::size_t>(std::find(seen.begin(), seen.end(), 0) - seen.begin());
}

/// A template and the values of its placeholders.
class Form {
public:
    Form(const char16_t* format, int length)
        : m_text(format, static_cast<std::size_t>(detail::measured(format, length)))
    {
        m_places.reserve(8);
        findPlaceholders(m_text, m_places);
    }

    /// Requests the values of the placeholders 0, 1, 2 and so on, in this order.
    template <class ValueOf>
    void takeValues(ValueOf valueOf, std::size_t most = SIZE_MAX)
    {
        m_values.resize(std::min(countConsecutive(m_places, m_memory), most));
        for (std::size_t number = 0; number < m_values.size(); ++number)
            m_values[number] = valueOf(number);
    }

    /// Valid as long as this object. The template and the values may be in the string that the result is assigned to.
    std::u16string_view fill();

private:
    std::byte m_place[1024];
    std::pmr::monotonic_buffer_resource m_memory {m_place, sizeof m_place};
    const std::u16string_view m_text;
    std::pmr::vector<Placeholder> m_places {&m_memory};
    std::pmr::vector<std::u16string_view> m_values {&m_memory};
    std::pmr::u16string m_result {&m_memory};
};

std::u16string_view Form::fill()
{
    std::size_t room = m_text.size();
    for (const Placeholder& placeholder : m_places)
        room += placeholder.number < m_values.size() ? m_values[placeholder.number].size() : 0;
    m_result.reserve(room);
    std::size_t copied = 0;
    for (const Placeholder& placeholder : m_places) {
        if (placeholder.number >= m_values.size())
            continue;
        m_result.append(m_text, copied, placeholder.start - copied).append(m_values[placeholder.number]);
        copied = placeholder.start + placeholder.length;
    }
    return m_result.append(m_text, copied);
}

} // namespace

namespace detail {

void FormatArgument::keep(const String& text)
{
    m_kept = text;
    m_view = m_kept.view();
}

void FormatArgument::set(std::int64_t number)
{
    print(number);
}

void FormatArgument::set(std::uint64_t number)
{
    print(number);
}

void FormatArgument::set(double number)
{
    print(number, std::chars_format::general, SIGNIFICANT);
}

template <class... Number>
void FormatArgument::print(Number... number)
{
    char digits[ROOM];
    const char* const end = std::to_chars(digits, digits + sizeof digits, number...).ptr;
    std::copy(static_cast<const char*>(digits), end, m_units);
    m_view = {m_units, static_cast<std::size_t>(end - digits)};
}

} // namespace detail

const String& String::format(const char16_t* format, int length, ...)
{
    std::va_list arguments;
    va_start(arguments, length);
    try {
        formatv(format, length, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
    return *this;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): given
const String& String::format(String format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    try {
        formatv(format.getData(), format.getLength(), arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
    va_end(arguments);
    return *this;
}

const String& String::formatv(const char16_t* format, int length, std::va_list arguments)
{
    Form form(format, length);
    form.takeValues([&](std::size_t) -> std::u16string_view {
        const char16_t* const argument = va_arg(arguments, const char16_t*);
        return argument != nullptr ? std::u16string_view(argument) : std::u16string_view();
    });
    return *this = form.fill();
}

const String& String::formatChecked(
    const char16_t* format, int length, const detail::FormatArgument* arguments, std::size_t count)
{
    Form form(format, length);
    form.takeValues([&](std::size_t number) { return arguments[number].view(); }, count);
    return *this = form.fill();
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): given
const String& String::formatv(String format, std::va_list arguments)
{
    return formatv(format.getData(), format.getLength(), arguments);
}

String String::valueOf(int value)
{
    return printed(value);
}

String String::valueOf(unsigned int value)
{
    return printed(value);
}

String String::valueOf(long value)
{
    return printed(value);
}

String String::valueOf(unsigned long value)
{
    return printed(value);
}

String String::valueOf(long long value)
{
    return printed(value);
}

String String::valueOf(unsigned long long value)
{
    return printed(value);
}

String String::valueOf(float value)
{
    return valueOf(static_cast<double>(value));
}

String String::valueOf(double value)
{
    return printed(value, std::chars_format::general, SIGNIFICANT);
}

String String::valueOf(bool value)
{
    return value ? TRUE_TEXT : FALSE_TEXT;
}

String String::valueOf(char16_t value)
{
    return String(value);
}

std::ostream& operator<<(std::ostream& stream, const String& text)
{
    return detail::insertUtf8(stream, text);
}

} // namespace vx
