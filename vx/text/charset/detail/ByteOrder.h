#pragma once

#include "vx/ByteOrder.h"

#include <bit>

namespace vx::text::charset::detail {

using vx::detail::loadNumber;
using vx::detail::storeNumber;

/// Whether bytes in either order must be swapped to become a number of this machine.
inline constexpr bool SWAPS_BIG = std::endian::native == std::endian::little;
inline constexpr bool SWAPS_LITTLE = !SWAPS_BIG;

template <bool swapped, class Number>
constexpr Number ordered(Number number) noexcept
{
    if constexpr (!swapped)
        return number;
    else if constexpr (sizeof(Number) == 2)
        return static_cast<Number>(number << 8 | number >> 8);
    else
        return (number & 0xFF) << 24 | (number & 0xFF00) << 8 | (number >> 8 & 0xFF00) | number >> 24;
}

} // namespace vx::text::charset::detail
