#pragma once

#include <cstdint>

namespace vx::text::charset::detail {

inline constexpr char16_t REPLACEMENT = u'\uFFFD';
inline constexpr std::uint32_t LAST_CODE_POINT = 0x10FFFF;

constexpr bool isLead(std::uint32_t unit) noexcept
{
    return (unit & 0xFFFFFC00U) == 0xD800;
}

constexpr bool isTrail(std::uint32_t unit) noexcept
{
    return (unit & 0xFFFFFC00U) == 0xDC00;
}

constexpr bool isSurrogate(std::uint32_t value) noexcept
{
    return (value & 0xFFFFF800U) == 0xD800;
}

constexpr std::uint32_t codePoint(char16_t lead, char16_t trail) noexcept
{
    return 0x10000 + ((lead - 0xD800U) << 10) + (trail - 0xDC00U);
}

constexpr char16_t leadOf(std::uint32_t value) noexcept
{
    return static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10));
}

constexpr char16_t trailOf(std::uint32_t value) noexcept
{
    return static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF));
}

} // namespace vx::text::charset::detail
