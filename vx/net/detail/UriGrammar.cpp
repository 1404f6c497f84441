#include "vx/net/detail/UriGrammar.h"

#include <algorithm>
#include <cstddef>

namespace vx::net::detail {

namespace {

constexpr std::string_view SUBCOMPONENT_DELIMITERS = "!$&'()*+,;=";

int valueOf(char digit)
{
    return isDigit(digit) ? digit - '0' : lower(digit) - 'a' + 10;
}

/// A number from 0 to 255 without unnecessary zeros.
bool isDecimalOctet(std::string_view text)
{
    if (text.empty() || text.size() > 3 || !std::ranges::all_of(text, isDigit) || (text.size() > 1 && text[0] == '0'))
        return false;
    int value = 0;
    for (const char digit : text)
        value = value * 10 + valueOf(digit);
    return value <= 255;
}

bool isIpv4Address(std::string_view text)
{
    for (int dots = 0; dots < 3; ++dots) {
        const std::size_t dot = text.find('.');
        if (dot == text.npos || !isDecimalOctet(text.substr(0, dot)))
            return false;
        text.remove_prefix(dot + 1);
    }
    return isDecimalOctet(text);
}

/// The number of groups of 16 bits in `text`, -1 for an error. Groups are separated by colons, and the last may be an
/// IPv4 address.
int countGroups(std::string_view text, bool mayEndInIpv4)
{
    if (text.empty())
        return 0;
    for (int groups = 1;; ++groups) {
        const std::size_t colon = text.find(':');
        const std::string_view group = text.substr(0, colon);
        if (colon == text.npos && mayEndInIpv4 && isIpv4Address(group))
            return groups + 1;
        if (group.empty() || group.size() > 4 || !std::ranges::all_of(group, isHexDigit))
            return -1;
        if (colon == text.npos)
            return groups;
        text.remove_prefix(colon + 1);
    }
}

bool isIpv6Address(std::string_view text)
{
    constexpr int GROUPS = 8;
    const std::size_t gap = text.find("::");
    if (gap == text.npos)
        return countGroups(text, true) == GROUPS;
    const int before = countGroups(text.substr(0, gap), false);
    const int after = countGroups(text.substr(gap + 2), true);
    return before >= 0 && after >= 0 && before + after < GROUPS;
}

/// "v1.x"
bool isLaterAddress(std::string_view text)
{
    const std::size_t dot = text.find('.');
    if (dot == text.npos || dot < 2 || lower(text[0]) != 'v' || dot + 1 == text.size())
        return false;
    return std::ranges::all_of(text.substr(1, dot - 1), isHexDigit)
        && std::ranges::all_of(text.substr(dot + 1), [](char byte) {
               return isUnreserved(byte) || byte == ':' || SUBCOMPONENT_DELIMITERS.find(byte) != std::string_view::npos;
           });
}

} // namespace

char byteOf(char high, char low)
{
    return static_cast<char>(valueOf(high) * 16 + valueOf(low));
}

std::string escaped(char byte)
{
    constexpr std::string_view DIGITS = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    return {'%', DIGITS[value / 16], DIGITS[value % 16]};
}

bool isScheme(std::string_view text)
{
    return !text.empty() && isLetter(text[0]) && std::ranges::all_of(text, [](char byte) {
        return isLetter(byte) || isDigit(byte) || byte == '+' || byte == '-' || byte == '.';
    });
}

bool consistsOf(std::string_view text, std::string_view more)
{
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char byte = text[at];
        if (byte == '%') {
            if (text.size() - at < 3 || !isHexDigit(text[at + 1]) || !isHexDigit(text[at + 2]))
                return false;
            at += 2;
        } else if (!isUnreserved(byte) && SUBCOMPONENT_DELIMITERS.find(byte) == SUBCOMPONENT_DELIMITERS.npos
            && more.find(byte) == more.npos) {
            return false;
        }
    }
    return true;
}

bool isHost(std::string_view text)
{
    if (!text.starts_with('['))
        return consistsOf(text, "");
    if (!text.ends_with(']'))
        return false;
    const std::string_view address = text.substr(1, text.size() - 2);
    return isIpv6Address(address) || isLaterAddress(address);
}

} // namespace vx::net::detail
