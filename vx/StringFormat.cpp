#include "vx/String.h"

#include "vx/StringLiteral.h"
#include "vx/detail/InsertUtf8.h"
#include "vx/detail/NumberText.h"
#include "vx/detail/TextCopy.h"
#include "vx/detail/TextRange.h"
#include "vx/detail/TextScan.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

namespace vx {

namespace {

constexpr STRUCT_VX_STR_LIT_INFO TRUE_TEXT = literal(u"true");
constexpr STRUCT_VX_STR_LIT_INFO FALSE_TEXT = literal(u"false");

template <class Value>
String printed(Value value)
{
    const detail::NumberText text(value);
    return String(text.view());
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

/// An array that needs no memory for up to `FEW` items. All begin uninitialised.
template <class Item, std::size_t FEW>
class ShortArray {
public:
    ShortArray() noexcept = default;
    ShortArray(const ShortArray&) = delete;
    ShortArray& operator=(const ShortArray&) = delete;

    Item* data() noexcept { return m_items; }
    const Item* begin() const noexcept { return m_items; }
    const Item* end() const noexcept { return m_items + m_size; }
    std::size_t size() const noexcept { return m_size; }
    const Item& operator[](std::size_t index) const noexcept { return m_items[index]; }

    void resize(std::size_t size)
    {
        if (size > m_room) {
            auto larger = std::make_unique_for_overwrite<Item[]>(std::max(size, m_room * 2));
            std::copy_n(m_items, m_size, larger.get());
            m_many = std::move(larger);
            m_items = m_many.get();
            m_room = std::max(size, m_room * 2);
        }
        m_size = size;
    }
    void push(const Item& item)
    {
        resize(m_size + 1);
        m_items[m_size - 1] = item;
    }

private:
    Item m_few[FEW];
    std::unique_ptr<Item[]> m_many;
    Item* m_items = m_few;
    std::size_t m_size = 0;
    std::size_t m_room = FEW;
};

/// A text; unlike a view, an array of these begins uninitialised.
struct Piece {
    const char16_t* text;
    std::size_t length;
};

using Placeholders = ShortArray<Placeholder, 16>;

/// The placeholders of a template in their order. A number so high that the template is too short for all lower ones is
/// no placeholder.
void findPlaceholders(std::u16string_view text, Placeholders& places)
{
    const auto next = [&](std::size_t from) {
        const int place = detail::findUnit(text.data() + from, static_cast<int>(text.size() - from), u'{');
        return place >= 0 ? from + static_cast<std::size_t>(place) : text.npos;
    };
    std::size_t length = 1;
    for (std::size_t at = next(0); at != text.npos; at = next(at + length)) {
        length = 1;
        const int number = placeholderAt(text.substr(at), &length);
        if (number >= 0 && static_cast<std::size_t>(number) < text.size() / 3)
            places.push({at, length, static_cast<std::size_t>(number)});
    }
}

/// The number of placeholders 0, 1, 2 and so on that occur, up to the first that does not.
std::size_t countConsecutive(const Placeholders& places)
{
    ShortArray<bool, 64> seen;
    seen.resize(places.size());
    std::fill_n(seen.data(), seen.size(), false);
    for (const Placeholder& place : places) {
        if (place.number < seen.size())
            seen.data()[place.number] = true;
    }
    return static_cast<std::size_t>(std::find(seen.begin(), seen.end(), false) - seen.begin());
}

/// A template and the values of its placeholders.
class Form {
public:
    Form(const char16_t* format, int length)
        : m_text(format, static_cast<std::size_t>(detail::measured(format, length)))
    {
        findPlaceholders(m_text, m_places);
    }

    /// Requests the values of the placeholders 0, 1, 2 and so on, in this order.
    template <class ValueOf>
    void takeValues(ValueOf valueOf, std::size_t most = SIZE_MAX)
    {
        m_values.resize(std::min(countConsecutive(m_places), most));
        for (std::size_t number = 0; number < m_values.size(); ++number) {
            const std::u16string_view value = valueOf(number);
            m_values.data()[number] = {value.data(), value.size()};
        }
    }

    /// Valid as long as this object. The template and the values may be in the string that the result is assigned to.
    std::u16string_view fill();

private:
    const std::u16string_view m_text;
    Placeholders m_places;
    ShortArray<Piece, 16> m_values;
    ShortArray<char16_t, 512> m_result;
};

std::u16string_view Form::fill()
{
    std::size_t length = m_text.size();
    for (const Placeholder& placeholder : m_places) {
        if (placeholder.number < m_values.size())
            length += m_values[placeholder.number].length - placeholder.length;
    }
    m_result.resize(length);
    char16_t* out = m_result.data();
    const auto add = [&](const char16_t* units, std::size_t count) {
        detail::moveUnits(out, units, count);
        out += count;
    };
    std::size_t copied = 0;
    for (const Placeholder& placeholder : m_places) {
        if (placeholder.number >= m_values.size())
            continue;
        add(m_text.data() + copied, placeholder.start - copied);
        add(m_values[placeholder.number].text, m_values[placeholder.number].length);
        copied = placeholder.start + placeholder.length;
    }
    add(m_text.data() + copied, m_text.size() - copied);
    return {m_result.begin(), length};
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
    print(number);
}

template <class... Number>
void FormatArgument::print(Number... number)
{
    const NumberText text(number...);
    m_view = {m_units, text.view().copy(m_units, ROOM)};
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
    return printed(value);
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
