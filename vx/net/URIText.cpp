#include "vx/Exception.h"
#include "vx/detail/TextBuilder.h"
#include "vx/net/URI.h"
#include "vx/net/detail/QueryTable.h"
#include "vx/net/detail/QueryText.h"
#include "vxsys/Number.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

namespace vx::net {

namespace {

using vx::detail::builtText;
using vx::detail::TextBuilder;
using View = std::u16string_view;

constexpr const char16_t* UTF_8 = u"UTF-8";

/// The UTF-8 bytes of `text`. A lone trailing surrogate becomes three bytes.
std::string utf8Of(View text)
{
    constexpr std::size_t BYTES_PER_UNIT = 3; // at most
    std::string bytes(text.size() * BYTES_PER_UNIT, '\0');
    if (bytes.size() >= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        throwBadAllocation();
    const auto size
        = static_cast<std::int32_t>(bytes.size() + 1); // with the terminator, for which a std::string has room
    const std::int32_t written = String(text).getBytes(bytes.data(), size, UTF_8);
    bytes.resize(static_cast<std::size_t>(written - 1));
    return bytes;
}

constexpr bool isAscii(char16_t unit) noexcept
{
    return unit < 0x80;
}

/// For each byte, one bit for each class that escapes it.
constexpr auto ESCAPED_IN = [] {
    constexpr std::string_view ALWAYS = "\"#%<>[\\]^`{|}";
    constexpr std::string_view OF_CLASS[] = {"/:;?@", "/;=?", "$&+,/:;=?@"};
    constexpr unsigned char ALL = 0xFF;
    std::array<unsigned char, 256> classes {};
    for (unsigned byte = 0; byte < classes.size(); ++byte) {
        const auto character = static_cast<char>(byte);
        if (byte <= ' ' || byte >= 0x7F || ALWAYS.find(character) != ALWAYS.npos)
            classes[byte] = ALL;
        for (unsigned part = 0; part < std::size(OF_CLASS); ++part) {
            if (OF_CLASS[part].find(character) != std::string_view::npos)
                classes[byte] = static_cast<unsigned char>(classes[byte] | 1U << part);
        }
    }
    return classes;
}();

/// Appends two upper-case digits. For bytes that are not ASCII, the platform's conversion of numbers writes them.
void appendEscape(std::u16string& escaped, unsigned char byte)
{
    constexpr char16_t DIGITS[] = u"0123456789ABCDEF";
    escaped += u'%';
    if (byte < 0x80) {
        escaped += DIGITS[byte >> 4];
        escaped += DIGITS[byte & 0xF];
    } else {
        char16_t digits[33];
        escaped += VXLToStrW(byte, digits, 16);
    }
}

} // namespace

String URI::toString() const
{
    return builtText([&](TextBuilder& target) {
        if (hasScheme()) {
            target.append(m_parts.texts[SCHEME]);
            target.append(u':');
        }
        if (hasSchemeSpecificPart())
            appendSchemeSpecificPart(target, false);
    });
}

std::u16string URI::getEscapedString(View text, ESCAPE_PART part)
{
    const auto isKept = [&](char16_t unit) { return isAscii(unit) && (ESCAPED_IN[unit] & 1U << part) == 0; };
    std::u16string escaped;
    escaped.reserve(text.size());
    for (auto place = text.begin(); place != text.end();) {
        auto end = std::find_if_not(place, text.end(), isKept);
        escaped.append(place, end);
        for (; end != text.end() && isAscii(*end) && !isKept(*end); ++end)
            appendEscape(escaped, static_cast<unsigned char>(*end));
        place = std::find_if(end, text.end(), isAscii);
        if (place != end) {
            for (const char byte : utf8Of(View(end, place)))
                appendEscape(escaped, static_cast<unsigned char>(byte));
        }
    }
    return escaped;
}

String URI::getUnescapedString(View text)
{
    constexpr std::size_t DIGITS = 2;
    if (std::ranges::all_of(text, [](char16_t unit) { return isAscii(unit) && unit != u'%'; }))
        return String(text);
    std::string bytes = utf8Of(text);
    std::size_t end = 0;
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (bytes[index] != '%') {
            bytes[end++] = bytes[index];
            continue;
        }
        if (bytes.size() - index <= DIGITS)
            throw Exception();
        const char16_t digits[DIGITS + 1]
            = {static_cast<unsigned char>(bytes[index + 1]), static_cast<unsigned char>(bytes[index + 2]), 0};
        bytes[end++] = static_cast<char>(VXStrToULW(digits, nullptr, 16) & 0xFF);
        index += DIGITS;
    }
    return String(bytes.data(), static_cast<int>(end), UTF_8);
}

void URI::append(TextBuilder& target, View stored, bool unescape)
{
    if (unescape)
        target.append(getUnescapedString(stored));
    else
        target.append(stored);
}

void URI::appendUserInfo(TextBuilder& target, bool unescape) const
{
    append(target, m_parts.texts[USER], unescape);
    if (hasPassword()) {
        target.append(u':');
        target.append(m_parts.texts[PASSWORD]);
    }
}

void URI::appendAuthority(TextBuilder& target, bool unescape) const
{
    if (hasUser()) {
        appendUserInfo(target, unescape);
        target.append(u'@');
    }
    if (hasHost())
        append(target, m_parts.texts[HOST], unescape);
    if (hasPort()) {
        target.append(u':');
        target.appendNumber(m_parts.port);
    }
}

void URI::appendQuery(TextBuilder& target, bool unescape) const
{
    bool isFirst = true;
    const auto appendPair = [&](View key, View value) {
        if (!std::exchange(isFirst, false))
            target.append(u'&');
        target.append(key);
        target.append(u'=');
        append(target, value, unescape);
    };
    detail::ShortQuery few;
    if (m_query == nullptr && few.read(m_parts.texts[QUERY]))
        few.forEach(appendPair);
    else if (detail::QueryTable* query = readQuery())
        query->forEach(appendPair);
}

void URI::appendSchemeSpecificPart(TextBuilder& target, bool unescape) const
{
    if (isOpaque()) {
        target.append(m_parts.texts[OPAQUE_PART]);
        return;
    }
    if (hasAuthority()) {
        target.append(u"//");
        appendAuthority(target, unescape);
    }
    if (hasPath()) {
        target.append(u'/');
        append(target, m_parts.texts[PATH], unescape);
    }
    if (hasQuery()) {
        target.append(u'?');
        appendQuery(target, unescape);
    }
}

} // namespace vx::net
