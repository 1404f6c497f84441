#include "vx/math/BigInteger.h"

#include "vx/Exceptions.h"
#include "vx/String.h"
#include "vx/math/detail/LimbsText.h"
#include "vxsys/Number.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace vx::math {

namespace {

constexpr std::size_t GROUP = 3;

constexpr bool isRadix(int radix) noexcept
{
    return radix >= 2 && radix <= 36;
}

/// As VXStrToLW sees it; `radix` and above for no digit.
constexpr int digitOf(char16_t unit) noexcept
{
    if (unit >= u'0' && unit <= u'9')
        return unit - u'0';
    const int letter = unit | 0x20;
    return unit < 0x80 && letter >= 'a' && letter <= 'z' ? letter - 'a' + 10 : 36;
}

int valueOfGroup(std::u16string_view group, int radix) noexcept
{
    char16_t text[GROUP + 1] = {};
    group.copy(text, GROUP);
    return VXStrToLW(text, nullptr, radix);
}

/// The value of each digit. A group with anything else in it has the digits of what can be read of it.
util::RawArray<unsigned char> readDigits(std::u16string_view text, int radix)
{
    auto digits = util::makeRawArray<unsigned char>(static_cast<std::int64_t>(text.size()));
    unsigned char* digit = digits.get();
    const std::size_t first = text.size() % GROUP;
    for (std::size_t length = first != 0 ? first : GROUP; !text.empty(); length = GROUP) {
        const std::u16string_view group = text.substr(0, length);
        text.remove_prefix(length);
        if (std::all_of(group.begin(), group.end(), [&](char16_t unit) { return digitOf(unit) < radix; })) {
            digit = std::transform(group.begin(), group.end(), digit,
                [](char16_t unit) { return static_cast<unsigned char>(digitOf(unit)); });
            continue;
        }
        int value = valueOfGroup(group, radix);
        for (std::size_t place = length; place-- > 0; value /= radix)
            digit[place] = static_cast<unsigned char>(value % radix);
        digit += length;
    }
    return digits;
}

} // namespace

BigInteger::BigInteger(const String& text, int radix)
{
    std::u16string_view digits = text.view();
    const bool negative = digits.starts_with(u'-');
    if (negative)
        digits.remove_prefix(1);
    if (digits.empty() || digits.find(u'-') != digits.npos)
        throw Exception(u"Number Format Exception");
    digits.remove_prefix(std::min(digits.find_first_not_of(u'0'), digits.size()));
    if (digits.empty())
        return;

    if (isRadix(radix)) {
        const std::size_t count = detail::limbsForDigits(digits.size(), radix);
        auto magnitude = util::makeRawArray<Limb>(static_cast<std::int64_t>(count));
        detail::fromDigits(magnitude.get(), {readDigits(digits, radix).get(), digits.size()}, radix);
        takeLimbs(std::move(magnitude), count, negative);
        return;
    }
    // No group has a value then, except in radix 0, which goes by prefixes and drops all groups but the last.
    *this = valueOfGroup(digits.substr(digits.size() - std::min(digits.size(), GROUP)), radix);
    m_negative = negative;
}

String BigInteger::toString(int radix) const
{
    const detail::Natural magnitude = limbs();
    if (magnitude.empty())
        return String(u"0");
    if (!isRadix(radix))
        throw RangeErrorException(u"Radix must be from 2 to 36.");
    const std::string digits = detail::toDigits(magnitude, radix);
    const int length = static_cast<int>(digits.size()) + m_negative;
    String text(length);
    char16_t* units = text.getWriteLock(length);
    if (m_negative)
        *units++ = u'-';
    std::copy(digits.begin(), digits.end(), units);
    text.releaseWriteLock(length);
    return text;
}

} // namespace vx::math
