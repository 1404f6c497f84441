#include "LineText.h"

#include <cstdint>
#include <string>

namespace vxlogd {

namespace {

constexpr char32_t REPLACEMENT = 0xFFFD;

/// Takes one character off the front of `bytes`; of what is none, one byte. The forms of the Unicode Standard, table 3-7.
char32_t takeCharacter(std::string_view& bytes)
{
    const auto byteAt = [&](std::size_t index) { return static_cast<std::uint8_t>(bytes[index]); };
    const std::uint8_t lead = byteAt(0);
    if (lead < 0x80) {
        bytes.remove_prefix(1);
        return lead;
    }
    const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
    const std::uint8_t least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const std::uint8_t most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    bool isWhole = length > 0 && bytes.size() >= length && byteAt(1) >= least && byteAt(1) <= most;
    for (std::size_t index = 2; isWhole && index < length; ++index)
        isWhole = (byteAt(index) & 0xC0) == 0x80;
    if (!isWhole) {
        bytes.remove_prefix(1);
        return REPLACEMENT;
    }
    char32_t character = lead & (0xFFU >> (length + 1));
    for (std::size_t index = 1; index < length; ++index)
        character = character << 6 | (byteAt(index) & 0x3FU);
    bytes.remove_prefix(length);
    return character;
}

char32_t readable(char32_t character)
{
    constexpr char32_t PICTURES = 0x2400; // a picture for each control character of ASCII
    constexpr char32_t DELETE = 0x7F;
    constexpr char32_t PICTURE_OF_DELETE = 0x2421;

    if (character == U'\t')
        return character;
    if (character < U' ')
        return PICTURES + character;
    if (character == DELETE)
        return PICTURE_OF_DELETE;
    const bool isControl = character > DELETE && character < 0xA0;
    const bool isSeparator = character == 0x2028 || character == 0x2029;
    const bool isDirection = character == 0x061C || character == 0x200E || character == 0x200F
        || (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
    return isControl || isSeparator || isDirection ? REPLACEMENT : character;
}

} // namespace

vx::String readableText(std::string_view bytes)
{
    std::u16string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const char32_t character = readable(takeCharacter(bytes));
        if (character < 0x10000) {
            text += static_cast<char16_t>(character);
        } else {
            text += static_cast<char16_t>(0xD7C0 + (character >> 10));
            text += static_cast<char16_t>(0xDC00 | (character & 0x3FF));
        }
    }
    return vx::String(std::u16string_view(text));
}

} // namespace vxlogd
