#include "vx/String.h"

#include "vx/StringLiteral.h"
#include "vx/detail/InsertUtf8.h"

#include <charconv>
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
    const char* end = std::to_chars(digits, digits + sizeof digits, value...).ptr;
    char16_t text[sizeof digits];
    char16_t* last = text;
    for (const char* digit = digits; digit != end; ++digit)
        *last++ = static_cast<char16_t>(*digit);
    return String(text, static_cast<int>(last - text));
}

/// The number in a placeholder at the head of `text`, or -1 where there is none. `*length` gets its units.
int placeholderAt(std::u16string_view text, std::size_t* length) noexcept
{
    constexpr int LARGEST = 99999999;
    std::size_t index = 1; // behind the brace
    int number = 0;
    while (index < text.size() && text[index] >= u'0' && text[index] <= u'9' && number <= LARGEST)
        number = number * 10 + (text[index++] - u'0');
    const bool isPrinted = index > 1 && (text[1] != u'0' || index == 2); // numbers as valueOf prints them
    if (!isPrinted || index >= text.size() || text[index] != u'}')
        return -1;
    *length = index + 1;
    return number;
}

/// How many of the numbers from 0 on occur in a template, up to the first that does not.
int consecutivePlaceholders(std::u16string_view text)
{
    std::vector<bool> seen;
    for (std::size_t at = text.find(u'{'); at != text.npos; at = text.find(u'{', at + 1)) {
        std::size_t length = 0;
        const int number = placeholderAt(text.substr(at), &length);
        if (number < 0 || static_cast<std::size_t>(number) >= text.size() / 3) // so many do not fit in the template
            continue;
        if (seen.size() <= static_cast<std::size_t>(number))
            seen.resize(static_cast<std::size_t>(number) + 1);
        seen[static_cast<std::size_t>(number)] = true;
    }
    int count = 0;
    while (static_cast<std::size_t>(count) < seen.size() && seen[static_cast<std::size_t>(count)])
        ++count;
    return count;
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
    const String source(format, length); // template and arguments may be this string's own text
    const std::u16string_view text = source.view();
    std::vector<std::u16string_view> values(static_cast<std::size_t>(consecutivePlaceholders(text)));
    for (std::u16string_view& value : values) {
        if (const char16_t* argument = va_arg(arguments, const char16_t*))
            value = argument;
    }

    std::u16string result;
    std::size_t copied = 0;
    for (std::size_t at = text.find(u'{'); at != text.npos; at = text.find(u'{', at)) {
        std::size_t placeholder = 1;
        const int number = placeholderAt(text.substr(at), &placeholder);
        if (number >= 0 && static_cast<std::size_t>(number) < values.size()) {
            result.append(text, copied, at - copied).append(values[static_cast<std::size_t>(number)]);
            copied = at + placeholder;
        }
        at += placeholder;
    }
    result.append(text, copied);
    return *this = std::u16string_view(result);
}

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
