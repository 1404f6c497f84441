#pragma once

#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Unicode.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vx::text::charset::detail {

constexpr bool isFollower(signed char byte) noexcept
{
    return byte < -0x40; // 0x80 to 0xBF
}

/// Decodes characters that begin before `until`, up to a fault, an end, or a character of four bytes. It uses branches
/// and no table: the processor must wait for a position that is loaded from memory, but predicts one that a branch
/// chooses.
inline void decodeShort(Decoding& pass, const signed char* until) noexcept
{
    const signed char* in = pass.in;
    char16_t* out = pass.out;
    // Decodes one character of no more than `left` bytes. A constant `left` needs no comparison.
    const auto decodeNext = [&](std::ptrdiff_t left) {
        const auto byteAt = [&](int index) { return std::uint32_t {static_cast<std::uint8_t>(in[index])}; };
        if (in[0] >= 0) {
            *out = static_cast<char16_t>(in[0]);
            ++in;
            return true;
        }
        if (left < 2 || !isFollower(in[1]))
            return false;
        const std::uint32_t first = byteAt(0);
        if (first - 0xC2 < 0xE0 - 0xC2) {
            *out = static_cast<char16_t>((first << 6) + byteAt(1) - ((0xC0 << 6) + 0x80));
            in += 2;
            return true;
        }
        if ((first & 0xF0) != 0xE0 || left < 3 || !isFollower(in[2]))
            return false;
        const std::uint32_t value = (first & 0x0F) << 12 | (byteAt(1) & 0x3F) << 6 | (byteAt(2) & 0x3F);
        if (isSurrogate(value))
            return false;
        *out = static_cast<char16_t>(value);
        in += 3;
        return true;
    };
    // Each character takes a byte at least, so there is room for those that begin before `sure`, and each is complete.
    const signed char* const sure
        = in + std::max<std::ptrdiff_t>(std::min({until - in, pass.left() - 2, pass.room()}), 0);
    while (in < sure && decodeNext(3))
        ++out;
    while (in < until && out < pass.outEnd && decodeNext(pass.inEnd - in))
        ++out;
    pass.in = in;
    pass.out = out;
}

} // namespace vx::text::charset::detail
