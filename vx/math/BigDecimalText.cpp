#include "vx/String.h"
#include "vx/detail/TextRange.h"
#include "vx/math/BigDecimal.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>

namespace vx::math {

namespace {

/// As "%f" prints it in the C locale.
String printed(double value)
{
    char text[std::numeric_limits<double>::max_exponent10 + 16];
    const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6).ptr;
    return String(std::string_view(text, static_cast<std::size_t>(end - text)));
}

} // namespace

BigDecimal::BigDecimal(const String& text)
{
    parseDecimal(text);
}

BigDecimal::BigDecimal(float value)
{
    parseDecimal(printed(value));
}

BigDecimal::BigDecimal(double value)
{
    parseDecimal(printed(value));
}

BigDecimal& BigDecimal::operator=(double value)
{
    parseDecimal(printed(value));
    return *this;
}

String BigDecimal::toString() const
{
    const String unscaled = m_unscaled.toString();
    std::u16string_view digits = unscaled.view();
    if (digits.front() == u'-')
        digits.remove_prefix(1);
    const auto count = static_cast<std::int64_t>(digits.size());
    // Digits before the point; a zero has only one.
    const std::int64_t whole = m_scale < 0 && m_unscaled.isZero() ? count : count - m_scale;

    String text(vx::detail::withTerminator(std::max({count, whole, count - whole}) + 3)); // sign, zero and point
    if (isNegative())
        text += u'-';
    if (whole < 1) {
        text += u"0.";
        text.append(u'0', static_cast<int>(-whole));
        text.append(digits.data(), static_cast<int>(count));
        return text;
    }
    text.append(digits.data(), static_cast<int>(std::min(whole, count)));
    if (whole > count) {
        text.append(u'0', static_cast<int>(whole - count));
    } else if (whole < count) {
        text += u'.';
        text.append(digits.data() + whole, static_cast<int>(count - whole));
    }
    return text;
}

std::optional<BigDecimal> BigDecimal::tryParse(std::u16string_view text)
{
    const auto skipDigits
        = [text](std::size_t from) { return std::min(text.find_first_not_of(u"0123456789", from), text.size()); };
    const std::size_t first = text.starts_with(u'-') ? 1 : 0;
    std::size_t end = skipDigits(first);
    if (end == first)
        return {};
    if (end < text.size() && text[end] == u'.') {
        const std::size_t fraction = end + 1;
        end = skipDigits(fraction);
        if (end == fraction)
            return {};
    }
    return end == text.size() ? std::optional(BigDecimal(String(text))) : std::nullopt;
}

void BigDecimal::parseDecimal(const String& text)
{
    const int point = text.indexOf(u'.');
    if (point < 0) {
        m_unscaled = BigInteger(text, 10);
        m_scale = 0;
        return;
    }
    String digits = text.substring(0, point);
    const std::u16string_view fraction = text.view().substr(static_cast<std::size_t>(point) + 1);
    int scale = 0;
    if (!fraction.empty()) {
        // Trailing zeros are redundant, but one digit stays.
        scale = static_cast<int>(std::max(fraction.find_last_not_of(u'0') + 1, std::size_t {1}));
        digits.append(fraction.data(), scale);
    }
    m_unscaled = BigInteger(digits, 10);
    m_scale = scale;
}

} // namespace vx::math
