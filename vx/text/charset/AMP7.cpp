#include "vx/text/charset/BTCAMP7.h"
#include "vx/text/charset/CTBAMP7.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Substitution.h"
#include "vx/text/charset/detail/Unicode.h"

#include <algorithm>
#include <charconv>
#include <string_view>

namespace vx::text::charset {

using namespace detail;

namespace {

constexpr const char16_t* NAME = u"AMP-7";
constexpr int MAX_DIGITS = 5;
constexpr int MAX_FORM = MAX_DIGITS + 3; // with "&_" and ";"
constexpr std::uint32_t FIRST_WITHOUT_FORM = 0xFFFFF;
constexpr std::uint32_t NO_CHARACTER = LAST_CODE_POINT + 1;

constexpr bool isItself(char32_t value) noexcept
{
    return (value >= 0x20 && value < 0x7F && value != '&') || value == '\t' || value == '\n' || value == '\r';
}

/// False: no room.
bool store(Encoding& pass, std::string_view form) noexcept
{
    if (pass.room() < static_cast<std::ptrdiff_t>(form.size()))
        return false;
    pass.out = std::copy(form.begin(), form.end(), pass.out);
    return true;
}

// The buffer is larger than needed: compilers that vectorise the loop warn of a length that they cannot deduce.
bool storeNumber(Encoding& pass, std::uint32_t value) noexcept
{
    char form[4 * MAX_FORM] = {'&', '_'};
    char* end = std::to_chars(form + 2, form + MAX_FORM, value, 16).ptr;
    std::transform(form + 2, end, form + 2,
        [](char digit) { return static_cast<char>(digit >= 'a' ? digit - 'a' + 'A' : digit); });
    *end++ = ';';
    return store(pass, {form, end});
}

struct NamedForm {
    std::string_view rest; ///< after the ampersand
    char16_t unit;
};
constexpr NamedForm NAMED_FORMS[] = {
    {"AMP;", u'&'},
    {"APOS;", u'\''},
    {"QUOT;", u'"'},
};

/// The form at the start of some bytes.
struct Form {
    std::uint32_t value;
    std::ptrdiff_t length; ///< 0: the bytes end within it
};
constexpr Form BAD {NO_CHARACTER, 1};
constexpr Form CUT {NO_CHARACTER, 0};

constexpr int digitValue(char byte) noexcept
{
    if (byte >= '0' && byte <= '9')
        return byte - '0';
    const char upper = static_cast<char>(byte & ~0x20);
    return upper >= 'A' && upper <= 'F' ? upper - 'A' + 10 : -1;
}

/// Parses a number after its "&_".
Form numberIn(std::string_view text) noexcept
{
    std::uint32_t value = 0;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const auto length = static_cast<std::ptrdiff_t>(index + 3);
        if (text[index] == ';')
            return value == REPLACEMENT ? BAD : Form {value, length};
        const int digit = digitValue(text[index]);
        if (digit < 0 || index == MAX_DIGITS)
            return BAD;
        value = value << 4 | static_cast<std::uint32_t>(digit);
    }
    return CUT;
}

/// Parses an escape after its ampersand.
Form escapeIn(std::string_view text) noexcept
{
    if (text.starts_with('_'))
        return numberIn(text.substr(1));
    for (const NamedForm& form : NAMED_FORMS) {
        if (text.starts_with(form.rest))
            return {form.unit, static_cast<std::ptrdiff_t>(form.rest.size() + 1)};
        if (form.rest.starts_with(text))
            return CUT;
    }
    return BAD;
}

} // namespace

BTCAMP7::~BTCAMP7() noexcept = default;

std::int32_t BTCAMP7::convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Decoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    const auto substitute
        = [&] { return storeSubstitution(pass, m_substitutionMode, m_substitutionChars, m_substitutionLength, 1); };
    while (pass.in < pass.inEnd && pass.out < pass.outEnd) {
        if (*pass.in >= 0 && *pass.in != '&') {
            *pass.out++ = static_cast<char16_t>(*pass.in++);
            continue;
        }
        const std::string_view rest(
            reinterpret_cast<const char*>(pass.in + 1), static_cast<std::size_t>(pass.left() - 1));
        const Form form = *pass.in == '&' ? escapeIn(rest) : BAD;
        if (form.length == 0)
            break;
        if (isSurrogate(form.value))
            throw InvalidCharacterException(u"Invalid AMP-7 sequence (decoded chars in surrogate range)");
        if (!storeCharacter(pass, form.value, substitute))
            break;
        pass.in += form.length;
    }
    return pass.produced();
}

std::int32_t BTCAMP7::flush(char16_t*, std::int32_t*, std::int32_t)
{
    return 0;
}

void BTCAMP7::reset() { }

const char16_t* BTCAMP7::getEncodingName()
{
    return NAME;
}

int BTCAMP7::getMaxBytesPerChar()
{
    return MAX_FORM;
}

int BTCAMP7::getMaxCharsPerByte()
{
    return 1;
}

CTBAMP7::~CTBAMP7() noexcept = default;

std::int32_t CTBAMP7::convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
    std::int32_t* dstPos, std::int32_t dstLen)
{
    Encoding pass(src, srcPos, srcLen, dst, dstPos, dstLen);
    while (pass.in < pass.inEnd) {
        const char16_t unit = *pass.in;
        if (isItself(unit)) {
            if (pass.room() < 1)
                break;
            *pass.out++ = static_cast<signed char>(unit);
            ++pass.in;
            continue;
        }

        std::uint32_t value = unit;
        std::ptrdiff_t width = 1;
        if (isLead(unit)) {
            if (pass.left() < 2)
                break;
            if (!isTrail(pass.in[1]))
                throw InvalidCharacterException(LEAD_WITHOUT_TRAIL);
            value = codePoint(unit, pass.in[1]);
            width = 2;
        }
        const bool isStored = value == '&' ? store(pass, "&AMP;")
            : value < FIRST_WITHOUT_FORM
            ? storeNumber(pass, value)
            : storeSubstitution(pass, m_substitutionMode, m_substitutionBytes, m_substitutionLength, 1);
        if (!isStored)
            break;
        pass.in += width;
    }
    return pass.produced();
}

std::int32_t CTBAMP7::flush(signed char*, std::int32_t*, std::int32_t)
{
    return 0;
}

void CTBAMP7::reset() { }

const char16_t* CTBAMP7::getEncodingName()
{
    return NAME;
}

int CTBAMP7::getMaxBytesPerChar()
{
    return MAX_FORM;
}

int CTBAMP7::getMaxCharsPerByte()
{
    return 1;
}

} // namespace vx::text::charset
