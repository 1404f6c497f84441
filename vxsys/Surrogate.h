#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// Surrogate pairs of UTF-16 (Unicode, section 3.8). A unit is one of UTF-16, or a code point.
namespace vxsys {

inline constexpr std::uint32_t FIRST_BEYOND_BASIC_PLANE = 0x10000;
inline constexpr std::uint32_t LAST_CODE_POINT = 0x10FFFF;

/// Whether it is the first half of a pair.
template <std::unsigned_integral Unit>
constexpr bool isLead(Unit unit) noexcept
{
    return (unit & static_cast<Unit>(~0x3FFU)) == 0xD800;
}

/// Whether it is the second half of a pair.
template <std::unsigned_integral Unit>
constexpr bool isTrail(Unit unit) noexcept
{
    return (unit & static_cast<Unit>(~0x3FFU)) == 0xDC00;
}

/// Whether it is one half of a pair.
template <std::unsigned_integral Unit>
constexpr bool isSurrogate(Unit unit) noexcept
{
    return (unit & static_cast<Unit>(~0x7FFU)) == 0xD800;
}

/// Whether the unit at `index` is one half of a pair without the other half.
constexpr bool isLoneSurrogate(std::u16string_view text, std::size_t index) noexcept
{
    if (isLead(text[index]))
        return index + 1 == text.size() || !isTrail(text[index + 1]);
    return isTrail(text[index]) && (index == 0 || !isLead(text[index - 1]));
}

constexpr std::uint32_t codePoint(char16_t lead, char16_t trail) noexcept
{
    return FIRST_BEYOND_BASIC_PLANE + ((lead - 0xD800U) << 10) + (trail - 0xDC00U);
}

/// The two halves of a code point above U+FFFF.
constexpr char16_t leadOf(std::uint32_t codePoint) noexcept
{
    return static_cast<char16_t>(0xD800 + ((codePoint - FIRST_BEYOND_BASIC_PLANE) >> 10));
}
constexpr char16_t trailOf(std::uint32_t codePoint) noexcept
{
    return static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
}

} // namespace vxsys
