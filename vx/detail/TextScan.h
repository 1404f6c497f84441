#pragma once

#include <cstdint>
#include <cstring>

namespace vx::detail {

/// The first place of `unit` in `length` units, or -1. Blocks of a fixed size let the compiler use vector instructions.
inline int findUnit(const char16_t* text, int length, char16_t unit) noexcept
{
    constexpr int BLOCK = 32;
    int index = 0;
    for (; length - index >= BLOCK; index += BLOCK) {
        std::uint16_t found = 0;
        for (int offset = 0; offset < BLOCK; ++offset)
            found = static_cast<std::uint16_t>(found | (text[index + offset] == unit ? 1 : 0));
        if (found != 0)
            break;
    }
    for (; index < length; ++index) {
        if (text[index] == unit)
            return index;
    }
    return -1;
}

/// -1, 0 or 1 by unit value.
inline int compareUnits(const char16_t* left, const char16_t* right, int length) noexcept
{
    constexpr int BLOCK = 16;
    int index = 0;
    while (length - index >= BLOCK && std::memcmp(left + index, right + index, BLOCK * sizeof(char16_t)) == 0)
        index += BLOCK;
    for (; index < length; ++index) {
        if (left[index] != right[index])
            return left[index] < right[index] ? -1 : 1;
    }
    return 0;
}

inline bool equalUnits(const char16_t* left, const char16_t* right, int length) noexcept
{
    return length == 0 || std::memcmp(left, right, static_cast<std::size_t>(length) * sizeof(char16_t)) == 0;
}

} // namespace vx::detail
