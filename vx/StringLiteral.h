#pragma once

#include <cstddef>
#include <cstdint>

/// A constant text, zero-terminated, and its length without the terminator. A `String` made of it uses the text in
/// place.
struct STRUCT_VX_STR_LIT_INFO {
    const char16_t* text;
    std::int32_t length;
};

namespace vx {

/// The record of a literal: `constexpr auto YES = literal(u"yes");`
template <std::size_t Size>
constexpr STRUCT_VX_STR_LIT_INFO literal(const char16_t (&text)[Size]) noexcept
{
    return {text, static_cast<std::int32_t>(Size - 1)};
}

} // namespace vx
