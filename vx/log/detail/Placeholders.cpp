#include "vx/log/detail/Placeholders.h"

#include "vxsys/Memory.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>
#include <vector>

namespace vx::log::detail {

namespace {

template <class T>
using Vector = std::vector<T, vxsys::Allocator<T>>;

struct Placeholder {
    std::size_t position;
    std::size_t length;
    int number;
};

constexpr bool isDigit(char16_t unit) noexcept
{
    return unit >= u'0' && unit <= u'9';
}

/// The number of the placeholder at `position`, or -1: digits between braces, as `String::valueOf` writes a number.
int numberAt(std::u16string_view text, std::size_t position, std::size_t* length) noexcept
{
    constexpr std::size_t MOST_DIGITS = std::numeric_limits<int>::digits10; // no argument has a longer number
    std::size_t digits = 0;
    int number = 0;
    for (; digits <= MOST_DIGITS; ++digits) {
        const std::size_t index = position + 1 + digits;
        if (index >= text.size() || !isDigit(text[index]))
            break;
        if (digits < MOST_DIGITS)
            number = 10 * number + (text[index] - u'0');
    }
    const std::size_t end = position + 1 + digits;
    const bool hasLeadingZero = digits > 1 && text[position + 1] == u'0';
    if (digits < 1 || digits > MOST_DIGITS || hasLeadingZero || end >= text.size() || text[end] != u'}')
        return -1;
    *length = digits + 2;
    return number;
}

/// The placeholders, in the order of the text.
Vector<Placeholder> findAll(std::u16string_view text)
{
    Vector<Placeholder> found;
    std::size_t length = 0;
    for (std::size_t from = text.find(u'{'); from != text.npos; from = text.find(u'{', from + length)) {
        const int number = numberAt(text, from, &length);
        if (number >= 0)
            found.push_back({from, length, number});
        else
            length = 1;
    }
    return found;
}

/// The numbers from 0 up that all occur.
int countWithoutGap(const Vector<Placeholder>& found)
{
    Vector<int> numbers;
    for (const Placeholder& placeholder : found)
        numbers.push_back(placeholder.number);
    std::sort(numbers.begin(), numbers.end());
    int count = 0;
    for (const int number : numbers)
        count += number == count ? 1 : 0;
    return count;
}

} // namespace

String expandPlaceholders(const String& pattern, const collections::List<Object>& arguments)
{
    const std::u16string_view text = pattern.view();
    const Vector<Placeholder> found = findAll(text);
    const int count = countWithoutGap(found);
    if (count == 0 || count > arguments.getSize())
        return pattern;

    Vector<char16_t> expanded;
    std::size_t done = 0;
    for (const Placeholder& placeholder : found) {
        if (placeholder.number >= count)
            continue;
        const Reference<Object> argument = arguments.get(placeholder.number);
        const String value = argument != nullptr ? argument->toString() : String();
        const std::u16string_view before = text.substr(done, placeholder.position - done);
        expanded.insert(expanded.end(), before.begin(), before.end());
        expanded.insert(expanded.end(), value.view().begin(), value.view().end());
        done = placeholder.position + placeholder.length;
    }
    expanded.insert(expanded.end(), text.begin() + static_cast<std::ptrdiff_t>(done), text.end());
    return String(std::u16string_view(expanded.data(), expanded.size()));
}

} // namespace vx::log::detail
