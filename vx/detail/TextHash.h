#pragma once

#include "vxsys/Text.h"

#include <cstdint>

namespace vx::detail {

/// `VXToLowerW`, with a shortcut for ASCII.
inline char16_t lowerUnit(char16_t unit) noexcept
{
    if (unit >= 0x80)
        return VXToLowerW(unit);
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

/// The hash of text keys: `hash * 37 + unit` over at most 63 units at equal distances. It reads four units at a time,
/// whose products do not depend on each other.
constexpr std::uint32_t hashText(const char16_t* text, int length, bool ignoreCase) noexcept
{
    constexpr std::uint32_t FACTOR = 37;
    constexpr std::uint32_t FACTOR2 = FACTOR * FACTOR;
    const auto unitAt
        = [=](std::int64_t index) -> std::uint32_t { return ignoreCase ? lowerUnit(text[index]) : text[index]; };
    const std::int64_t step = (length - 32) / 32 + 1;
    std::uint32_t hash = 0;
    std::int64_t index = 0;
    for (; index + 3 * step < length; index += 4 * step) {
        const std::uint32_t first = unitAt(index) * FACTOR + unitAt(index + step);
        const std::uint32_t second = unitAt(index + 2 * step) * FACTOR + unitAt(index + 3 * step);
        hash = hash * (FACTOR2 * FACTOR2) + first * FACTOR2 + second;
    }
    for (; index < length; index += step)
        hash = hash * FACTOR + unitAt(index);
    return hash;
}

} // namespace vx::detail
