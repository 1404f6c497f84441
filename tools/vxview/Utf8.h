#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vxview {

/// Appends a character. `code` is no surrogate.
inline void appendUtf8(char32_t code, std::string& text)
{
    const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80) {
        text += static_cast<char>(code);
    } else if (code < 0x800) {
        text += static_cast<char>(0xC0 | code >> 6);
        tail(0);
    } else if (code < 0x10000) {
        text += static_cast<char>(0xE0 | code >> 12);
        tail(6);
        tail(0);
    } else {
        text += static_cast<char>(0xF0 | code >> 18);
        tail(12);
        tail(6);
        tail(0);
    }
}

/// The length of the character at the start of `text`, which is not empty; 0 if it is not UTF-8.
inline std::size_t characterLength(std::string_view text, char32_t& code)
{
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t length = first < 0x80 ? 1
        : first < 0xC2                      ? 0
        : first < 0xE0                      ? 2
        : first < 0xF0                      ? 3
        : first < 0xF5                      ? 4
                                            : 0;
    if (length == 0 || text.size() < length)
        return 0;
    code = length == 1 ? first : first & (0x7F >> length);
    for (std::size_t index = 1; index < length; ++index) {
        const auto byte = static_cast<unsigned char>(text[index]);
        if ((byte & 0xC0) != 0x80)
            return 0;
        code = code << 6 | (byte & 0x3F);
    }
    static constexpr char32_t LEAST[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < LEAST[length] || isSurrogate || code > 0x10FFFF ? 0 : length;
}

/// Calls `visit(code, bytes)` for each character. A byte that is not UTF-8 is visited as U+FFFD.
template <class Visit>
void forEachCharacter(std::string_view text, Visit&& visit)
{
    while (!text.empty()) {
        char32_t code = 0;
        std::size_t length = characterLength(text, code);
        if (length == 0) {
            length = 1;
            visit(char32_t {0xFFFD}, std::string_view("\xEF\xBF\xBD"));
        } else {
            visit(code, text.substr(0, length));
        }
        text.remove_prefix(length);
    }
}

} // namespace vxview
