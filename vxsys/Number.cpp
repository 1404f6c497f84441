#include "vxsys/Number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <string_view>

namespace {

constexpr int NO_DIGIT = 99;

int digitOf(char16_t unit) noexcept
{
    if (unit >= u'0' && unit <= u'9')
        return unit - u'0';
    const int letter = unit | 0x20;
    return unit < 0x80 && letter >= 'a' && letter <= 'z' ? letter - 'a' + 10 : NO_DIGIT;
}

bool isSpace(char16_t unit) noexcept
{
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

/// Skips white space and one sign. Returns true for a minus.
bool skipToNumber(const char16_t*& text) noexcept
{
    while (isSpace(*text))
        ++text;
    const bool isNegative = *text == u'-';
    if (isNegative || *text == u'+')
        ++text;
    return isNegative;
}

bool isHexPrefix(const char16_t* text) noexcept
{
    return text[0] == u'0' && (text[1] | 0x20) == u'x';
}

/// The common part of `strtol` and `strtoul`: the sign, and the magnitude, limited to the first number that does not
/// fit in 32 bits.
struct WholeNumber {
    bool isNegative;
    std::uint64_t magnitude;
    const char16_t* end;
};

WholeNumber parseWhole(const char16_t* text, std::int32_t radix) noexcept
{
    constexpr std::uint64_t TOO_LARGE = std::uint64_t {1} << 32;

    WholeNumber number {false, 0, text};
    if (text == nullptr || radix < 0 || radix == 1 || radix > 36)
        return number;

    number.isNegative = skipToNumber(text);
    if ((radix == 0 || radix == 16) && isHexPrefix(text) && digitOf(text[2]) < 16) {
        text += 2;
        radix = 16;
    } else if (radix == 0) {
        radix = *text == u'0' ? 8 : 10;
    }
    for (int digit; (digit = digitOf(*text)) < radix; ++text) {
        number.magnitude = std::min(number.magnitude * radix + digit, TOO_LARGE);
        number.end = text + 1;
    }
    return number;
}

/// A floating-point number rewritten for `std::from_chars`, which reads narrow text of limited length. The text may
/// have any length: leading zeros change only the exponent, and the digits after the first MAX_DIGITS become one digit,
/// which is enough for correct rounding.
class FloatText {
public:
    /// Reads digits with at most one point, then an exponent. Returns false if there is no digit.
    bool read(const char16_t*& text, int radix) noexcept;

    double toDouble() noexcept;

private:
    // A number exactly between two doubles has at most 767 significant digits.
    static constexpr std::size_t MAX_DIGITS = 800;
    // Larger than the number of digits of any text in memory.
    static constexpr std::int64_t MAX_EXPONENT = std::int64_t {1} << 40;

    void addDigit(char16_t unit, bool isAfterPoint) noexcept;
    void readExponent(const char16_t*& text) noexcept;

    char m_text[MAX_DIGITS + 32]; // digits, "e", exponent
    std::size_t m_length = 0;
    int m_radix = 10;
    /// The exponent that the position of the point adds: the number of digits by which it is to the right of the stored
    /// ones.
    std::int64_t m_places = 0;
    /// The exponent in the text: of ten, or of two for hexadecimal digits.
    std::int64_t m_exponent = 0;
    bool m_hasRest = false;
};

void FloatText::addDigit(char16_t unit, bool isAfterPoint) noexcept
{
    if (m_length == 0 && unit == u'0') {
        m_places -= isAfterPoint;
    } else if (m_length < MAX_DIGITS) {
        m_text[m_length++] = static_cast<char>(unit);
        m_places -= isAfterPoint;
    } else {
        m_hasRest = m_hasRest || unit != u'0';
        m_places += !isAfterPoint;
    }
}

void FloatText::readExponent(const char16_t*& text) noexcept
{
    const char16_t* place = text + 1;
    const bool isNegative = *place == u'-';
    if (isNegative || *place == u'+')
        ++place;
    if (digitOf(*place) > 9)
        return;
    for (int digit; (digit = digitOf(*place)) <= 9; ++place)
        m_exponent = std::min(m_exponent * 10 + digit, MAX_EXPONENT);
    if (isNegative)
        m_exponent = -m_exponent;
    text = place;
}

bool FloatText::read(const char16_t*& text, int radix) noexcept
{
    m_radix = radix;
    const char16_t* place = text;
    bool hasDigits = false;
    bool hasPoint = false;
    for (;; ++place) {
        if (*place == u'.' && !hasPoint) {
            hasPoint = true;
        } else if (digitOf(*place) < radix) {
            addDigit(*place, hasPoint);
            hasDigits = true;
        } else {
            break;
        }
    }
    if (!hasDigits)
        return false;
    if ((*place | 0x20) == (radix == 16 ? u'p' : u'e'))
        readExponent(place);
    text = place;
    return true;
}

double FloatText::toDouble() noexcept
{
    if (m_length == 0)
        return 0;
    if (m_hasRest) {
        m_text[m_length++] = '1';
        --m_places;
    }
    const bool isHex = m_radix == 16;
    const std::int64_t exponent = m_exponent + (isHex ? 4 * m_places : m_places);
    // The exponent of the first digit tells a number that is too large from one that is too small.
    const bool isLarge = exponent + static_cast<std::int64_t>(m_length) * (isHex ? 4 : 1) > 0;

    m_text[m_length++] = isHex ? 'p' : 'e';
    char* const end = std::to_chars(m_text + m_length, std::end(m_text), exponent).ptr;
    double value = 0;
    const auto parsed
        = std::from_chars(m_text, end, value, isHex ? std::chars_format::hex : std::chars_format::scientific);
    if (parsed.ec == std::errc::result_out_of_range)
        return isLarge ? HUGE_VAL : 0;
    return value;
}

bool startsWithWord(const char16_t* text, std::string_view word) noexcept
{
    return std::equal(word.begin(), word.end(), text,
        [](char expected, char16_t unit) { return unit < 0x80 && (unit | 0x20) == expected; });
}

/// Reads "inf", "infinity", "nan" or "nan(name)" in any case, and moves `text` after it.
bool readSpecial(const char16_t*& text, double& value) noexcept
{
    if (startsWithWord(text, "inf")) {
        text += startsWithWord(text, "infinity") ? 8 : 3;
        value = std::numeric_limits<double>::infinity();
        return true;
    }
    if (!startsWithWord(text, "nan"))
        return false;
    text += 3;
    value = std::numeric_limits<double>::quiet_NaN();
    if (*text == u'(') {
        const char16_t* name = text + 1;
        while (digitOf(*name) != NO_DIGIT || *name == u'_')
            ++name;
        if (*name == u')')
            text = name + 1;
    }
    return true;
}

/// If there is no number, `*end` is the start of the text and the value is 0.
double parseDouble(const char16_t* text, const char16_t*& end) noexcept
{
    end = text;
    if (text == nullptr)
        return 0;

    const bool isNegative = skipToNumber(text);
    double value = 0;
    if (!readSpecial(text, value)) {
        FloatText number;
        const char16_t* afterPrefix = text + 2;
        if (isHexPrefix(text) && number.read(afterPrefix, 16))
            text = afterPrefix;
        else if (!number.read(text, 10))
            return 0;
        value = number.toDouble();
    }
    end = text;
    return isNegative ? -value : value;
}

} // namespace

std::int32_t VXStrToIW(const char16_t* text) noexcept
{
    return VXStrToLW(text, nullptr, 10);
}

std::int32_t VXStrToLW(const char16_t* text, const char16_t** end, std::int32_t radix) noexcept
{
    constexpr std::int64_t LEAST = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t LARGEST = std::numeric_limits<std::int32_t>::max();

    const WholeNumber number = parseWhole(text, radix);
    if (end != nullptr)
        *end = number.end;
    const auto magnitude = static_cast<std::int64_t>(number.magnitude);
    return static_cast<std::int32_t>(std::clamp(number.isNegative ? -magnitude : magnitude, LEAST, LARGEST));
}

std::uint32_t VXStrToULW(const char16_t* text, const char16_t** end, std::int32_t radix) noexcept
{
    constexpr std::uint32_t LARGEST = std::numeric_limits<std::uint32_t>::max();

    const WholeNumber number = parseWhole(text, radix);
    if (end != nullptr)
        *end = number.end;
    if (number.magnitude > LARGEST)
        return LARGEST;
    const auto value = static_cast<std::uint32_t>(number.magnitude);
    return number.isNegative ? 0 - value : value;
}

double VXStrToDW(const char16_t* text, const char16_t** end) noexcept
{
    const char16_t* rest = nullptr;
    const double value = parseDouble(text, rest);
    if (end != nullptr)
        *end = rest;
    return value;
}

char16_t* VXLToStrW(std::int32_t value, char16_t* target, std::int32_t radix) noexcept
{
    char narrow[34];
    VXLToStrA(value, narrow, radix);
    if (target != nullptr)
        std::copy_n(narrow, std::string_view(narrow).size() + 1, target);
    return target;
}

char* VXLToStrA(std::int32_t value, char* target, std::int32_t radix) noexcept
{
    constexpr std::size_t ROOM = 33;

    if (target == nullptr)
        return nullptr;
    char* end = target;
    if (radix == 10)
        end = std::to_chars(target, target + ROOM, value).ptr;
    else if (radix >= 2 && radix <= 36)
        end = std::to_chars(target, target + ROOM, static_cast<std::uint32_t>(value), radix).ptr;
    *end = '\0';
    return target;
}
