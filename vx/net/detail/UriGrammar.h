#pragma once

#include <string>
#include <string_view>

namespace vx::net::detail {

/// The character classes of RFC 3986, appendix A, independent of the locale.
constexpr bool isDigit(char byte)
{
    return byte >= '0' && byte <= '9';
}
constexpr char lower(char byte)
{
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}
constexpr bool isLetter(char byte)
{
    return lower(byte) >= 'a' && lower(byte) <= 'z';
}
constexpr bool isHexDigit(char byte)
{
    return isDigit(byte) || (lower(byte) >= 'a' && lower(byte) <= 'f');
}
constexpr bool isUnreserved(char byte)
{
    return isLetter(byte) || isDigit(byte) || std::string_view("-._~").find(byte) != std::string_view::npos;
}

/// The byte of two hexadecimal digits, and the escape of a byte.
char byteOf(char high, char low);
std::string escaped(char byte);

bool isScheme(std::string_view text);
/// Unreserved characters, complete escapes, subcomponent delimiters, and the characters in `more`.
bool consistsOf(std::string_view text, std::string_view more);
/// A name, an IPv4 address, or an IPv6 or later address in brackets. It may be empty.
bool isHost(std::string_view text);

} // namespace vx::net::detail
