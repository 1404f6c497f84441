#include "vx/math/BigInteger.h"

#include "vx/Exceptions.h"
#include "vx/String.h"
#include "vx/math/detail/LimbsText.h"
#include "vxsys/Number.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace vx::math {

namespace {

constexpr std::size_t GROUP = 3;

constexpr bool isRadix(int radix) noexcept
{
    return radix >= 2 && radix <= 36;
}

constexpr unsigned char NO_DIGIT = 36;

/// The values of the digits that VXStrToLW accepts, by unit.
constexpr std::array<unsigned char, 128> makeDigits()
{
    std::array<unsigned char, 128> table {};
    table.fill(NO_DIGIT);
    for (unsigned char digit = 0; digit < 10; ++digit)
        table['0' + digit] = digit;
    for (unsigned char letter = 0; letter < 26; ++letter)
        table['a' + letter] = table['A' + letter] = static_cast<unsigned char>(10 + letter);
    return table;
}

constexpr std::array<unsigned char, 128> DIGITS = makeDigits();

/// `radix` and above for no digit.
constexpr unsigned char digitOf(char16_t unit) noexcept
{
    return unit < DIGITS.size() ? DIGITS[unit] : NO_DIGIT;
}

/// As `readDigits`, for the units that can be read four at a time, in radixes without letters. Removes these units from
/// the text.
bool readDecimalDigits(unsigned char*& digits, std::u16string_view& text, int radix) noexcept
{
    constexpr std::size_t LANES = 4;
    constexpr std::uint64_t ONES = 0x0001000100010001;
    constexpr std::uint64_t NO_DIGIT_BITS = 0xFFF0 * ONES;

    const std::uint64_t toSixteen = static_cast<std::uint64_t>(16 - radix) * ONES;
    std::uint64_t wrong = 0;
    for (; text.size() >= LANES; text.remove_prefix(LANES), digits += LANES) {
        std::uint64_t lanes = 0;
        std::memcpy(&lanes, text.data(), sizeof lanes);
        lanes ^= u'0' * ONES;
        wrong |= (lanes | ((lanes & ~NO_DIGIT_BITS) + toSixteen)) & NO_DIGIT_BITS;
        lanes |= lanes >> 8;
        lanes = (lanes & 0xFFFF) | (lanes >> 16 & 0xFFFF0000);
        std::memcpy(digits, &lanes, LANES);
    }
    return wrong == 0;
}

/// digits[text] = the value of each digit. False if there is anything else in it.
bool readDigits(unsigned char* digits, std::u16string_view text, int radix) noexcept
{
    bool isPlain = radix > 10 || readDecimalDigits(digits, text, radix);
    for (const char16_t unit : text) {
        const unsigned char digit = digitOf(unit);
        *digits++ = digit;
        isPlain &= digit < radix;
    }
    return isPlain;
}

int valueOfGroup(std::u16string_view group, int radix) noexcept
{
    char16_t text[GROUP + 1] = {};
    group.copy(text, GROUP);
    return VXStrToLW(text, nullptr, radix);
}

/// As above, where a group with anything else in it has the digits of what can be read of it.
void readGroups(unsigned char* digits, std::u16string_view text, int radix) noexcept
{
    const std::size_t first = text.size() % GROUP;
    for (std::size_t length = first != 0 ? first : GROUP; !text.empty(); length = GROUP) {
        const std::u16string_view group = text.substr(0, length);
        text.remove_prefix(length);
        if (!readDigits(digits, group, radix)) {
            int value = valueOfGroup(group, radix);
            for (std::size_t place = length; place-- > 0; value /= radix)
                digits[place] = static_cast<unsigned char>(value % radix);
        }
        digits += length;
    }
}

[[noreturn]] void throwNumberFormat()
{
    throw Exception(u"Number Format Exception");
}

} // namespace

std::optional<BigInteger> BigInteger::tryParse(std::u16string_view text, int radix)
{
    if (!isRadix(radix))
        throw RangeErrorException();
    const auto isDigit = [radix](char16_t unit) { return digitOf(unit) < radix; };
    const std::u16string_view digits = text.substr(text.starts_with(u'-') ? 1 : 0);
    if (digits.empty() || !std::all_of(digits.begin(), digits.end(), isDigit))
        return {};
    return BigInteger(String(text), radix);
}

BigInteger::BigInteger(const String& text, int radix)
{
    std::u16string_view digits = text.view();
    const bool negative = digits.starts_with(u'-');
    if (negative)
        digits.remove_prefix(1);
    if (digits.empty())
        throwNumberFormat();
    digits.remove_prefix(std::min(digits.find_first_not_of(u'0'), digits.size()));
    if (digits.empty())
        return;

    if (isRadix(radix)) {
        const auto values = vx::detail::makeRawArray<unsigned char>(static_cast<std::int64_t>(digits.size()));
        if (!readDigits(values.get(), digits, radix)) {
            if (digits.find(u'-') != digits.npos)
                throwNumberFormat();
            readGroups(values.get(), digits, radix);
        }
        const std::size_t count = detail::limbsForDigits(digits.size(), radix);
        auto magnitude = vx::detail::makeRawArray<Limb>(static_cast<std::int64_t>(count));
        detail::fromDigits(magnitude.get(), {values.get(), digits.size()}, radix);
        takeLimbs(std::move(magnitude), count, negative);
        return;
    }
    if (digits.find(u'-') != digits.npos)
        throwNumberFormat();
    // No group has a value then, except in radix 0, where prefixes select the radix and only the last group counts.
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
