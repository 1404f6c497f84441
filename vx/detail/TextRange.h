#pragma once

#include "vx/Exception.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

namespace vx::detail {

/// The longest text of a string: its terminator is counted in an `int` as well.
inline constexpr std::int64_t LONGEST_TEXT = std::numeric_limits<int>::max() - 1;

/// The units of a text of `length`, where -1 measures and anything else below 0 is nothing.
inline int measured(const char16_t* text, int length) noexcept
{
    if (text == nullptr)
        return 0;
    return length == -1 ? VXStrLenW(text) : std::max(length, 0);
}

/// The length of a view in the width of ours; what cannot be counted throws.
template <class Unit>
int lengthOf(std::basic_string_view<Unit> text)
{
    if (text.size() > static_cast<std::size_t>(LONGEST_TEXT))
        throwBadAllocation();
    return static_cast<int>(text.size());
}

/// Where -1 or too large a value means `end`.
inline int clipped(int value, int end) noexcept
{
    return value == -1 || value > end ? end : std::max(value, 0);
}

/// `length` units and the terminator.
inline int withTerminator(std::int64_t length)
{
    if (length > LONGEST_TEXT)
        throwBadAllocation();
    return static_cast<int>(length) + 1;
}

} // namespace vx::detail
