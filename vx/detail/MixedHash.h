#pragma once

#include "vx/detail/Wide.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace vx::detail {

/// A hash of all units of a text, for tables whose order no caller can see. It is faster than that of text keys and spreads
/// better. Blocks are multiplied and the halves of the product folded (V. Makarov, MUM hash, 2016).
inline std::uint32_t mixedHash(std::u16string_view text) noexcept
{
    constexpr std::uint64_t FIRST = 0x9E3779B97F4A7C15, SECOND = 0xD1B54A32D192ED03; // odd, with irregular bits
    constexpr std::size_t HALF = sizeof(std::uint64_t) / sizeof(char16_t), BLOCK = 2 * HALF;
    const char16_t* const units = text.data();
    const std::size_t length = text.size();
    std::uint64_t hash = length * FIRST;
    const auto mix = [&hash](std::uint64_t first, std::uint64_t second) {
        const Wide product = Wide {first ^ hash} * (second ^ SECOND);
        hash = static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
    };
    const auto load = [units](std::size_t place) {
        std::uint64_t half = 0;
        std::memcpy(&half, units + place, sizeof(half));
        return half;
    };
    for (std::size_t place = 0; place + BLOCK < length; place += BLOCK)
        mix(load(place), load(place + HALF));
    if (length >= BLOCK) // the last block and the last half may begin before those that are mixed already
        mix(load(length - BLOCK), load(length - HALF));
    else if (length >= HALF)
        mix(load(0), load(length - HALF));
    else if (length > 0)
        mix(units[0], std::uint64_t {units[length / 2]} << 16 | units[length - 1]);
    return static_cast<std::uint32_t>((hash * FIRST) >> 32);
}

} // namespace vx::detail
