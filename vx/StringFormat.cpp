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

} // namespace

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
    std::byte place[1024];
    std::pmr::monotonic_buffer_resource memory(place, sizeof place);
    const std::u16string_view text(format, static_cast<std::size_t>(detail::measured(format, length)));
    std::pmr::vector<Placeholder> places(&memory);
    places.reserve(8);
    findPlaceholders(text, places);
    std::pmr::vector<std::u16string_view> values(countConsecutive(places, memory), &memory);
    for (std::u16string_view& value : values) {
        if (const char16_t* argument = va_arg(arguments, const char16_t*))
            value = argument;
    }

    std::pmr::u16string result(&memory); // the template and the arguments may be in this string
    std::size_t room = text.size();
    for (const Placeholder& placeholder : places)
        room += placeholder.number < values.size() ? values[placeholder.number].size() : 0;
    result.reserve(room);
    std::size_t copied = 0;
    for (const Placeholder& placeholder : places) {
        if (placeholder.number >= values.size())
            continue;
        result.append(text, copied, placeholder.start - copied).append(values[placeholder.number]);
        copied = placeholder.start + placeholder.length;
    }
    result.append(text, copied);
    return *this = std::u16string_view(result);
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
    return printed(value, std::chars_format::general, 6);
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
