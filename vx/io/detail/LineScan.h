#pragma once

#include <cstdint>

namespace vx::io::detail {

inline bool isLineEnd(char16_t unit) noexcept
{
    return unit == 10 || unit == 13;
}

/// The first line feed or carriage return in `length` units, or `length`. Blocks of a fixed size let the compiler use
/// vector instructions.
inline std::int32_t findLineEnd(const char16_t* text, std::int32_t length) noexcept
{
    constexpr std::int32_t BLOCK = 32;
    std::int32_t index = 0;
    for (; length - index >= BLOCK; index += BLOCK) {
        std::uint16_t found = 0;
        for (std::int32_t offset = 0; offset < BLOCK; ++offset)
            found = static_cast<std::uint16_t>(found | (isLineEnd(text[index + offset]) ? 1 : 0));
        if (found != 0)
            break;
    }
    while (index < length && !isLineEnd(text[index]))
        ++index;
    return index;
}

} // namespace vx::io::detail
