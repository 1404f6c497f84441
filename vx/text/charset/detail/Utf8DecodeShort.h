#pragma once

#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Unicode.h"

#include <cstdint>

namespace vx::text::charset::detail {

constexpr bool isFollower(std::uint32_t byte) noexcept
{
    return (byte & 0xC0) == 0x80;
}

/// Decodes characters that begin before `until`, up to a fault, an end, or a character of four bytes. It uses branches
/// and no table: the processor must wait for a position that is loaded from memory, but predicts one that a branch
/// chooses.
inline void decodeShort(Decoding& pass, const signed char* until) noexcept
{
    const signed char* in = pass.in;
    char16_t* out = pass.out;
    const auto byteAt = [&](int index) { return std::uint32_t {static_cast<std::uint8_t>(in[index])}; };
    for (; in < until && out < pass.outEnd; ++out) {
        const std::uint32_t first = byteAt(0);
        if (first < 0x80) {
            *out = static_cast<char16_t>(first);
            ++in;
        } else if (first - 0xC2 < 0xE0 - 0xC2) {
            if (pass.inEnd - in < 2 || !isFollower(byteAt(1)))
                break;
            *out = static_cast<char16_t>((first & 0x1F) << 6 | (byteAt(1) & 0x3F));
            in += 2;
        } else {
            if ((first & 0xF0) != 0xE0 || pass.inEnd - in < 3 || !isFollower(byteAt(1)) || !isFollower(byteAt(2)))
                break;
            const std::uint32_t value = (first & 0x0F) << 12 | (byteAt(1) & 0x3F) << 6 | (byteAt(2) & 0x3F);
            if (isSurrogate(value))
                break;
            *out = static_cast<char16_t>(value);
            in += 3;
        }
    }
    pass.in = in;
    pass.out = out;
}

} // namespace vx::text::charset::detail
