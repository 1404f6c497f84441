#pragma once

#include "vxsys/Text.h"

#include <cstdint>

namespace vx::detail {

/// `VXToLowerW`, at hand for ASCII.
inline char16_t lowerUnit(char16_t unit) noexcept
{
    if (unit >= 0x80)
        return VXToLowerW(unit);
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

/// The hash of text keys: `hash * 37 + unit` over units a step apart, so that no more than 63 of them are read.
constexpr std::uint32_t hashText(const char16_t* text, int length, bool ignoreCase) noexcept
{
    const int step = (length - 32) / 32 + 1;
    std::uint32_t hash = 0;
    for (std::int64_t index = 0; index < length; index += step)
        hash = hash * 37 + (ignoreCase ? lowerUnit(text[index]) : text[index]);
    return hash;
}

} // namespace vx::detail
