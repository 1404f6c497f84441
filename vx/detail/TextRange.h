#pragma once

#include "vx/Exception.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string_view>

namespace vx::detail {

/// The longest text of a string: the length with its terminator must also fit in an `int`.
inline constexpr std::int64_t LONGEST_TEXT = std::numeric_limits<int>::max() - 1;

/// The number of units in a text of `length`: -1 measures it, any other negative length gives 0.
inline int measured(const char16_t* text, int length) noexcept
{
    if (text == nullptr)
        return 0;
    return length == -1 ? VXStrLenW(text) : std::max(length, 0);
}

/// The length of a view as our type. Throws if it does not fit.
template <class Unit>
int lengthOf(std::basic_string_view<Unit> text)
{
    if (text.size() > static_cast<std::size_t>(LONGEST_TEXT))
        throwBadAllocation();
    return static_cast<int>(text.size());
}

/// `value`, or `end` if `value` is -1 or too large.
inline int clipped(int value, int end) noexcept
{
    if (static_cast<unsigned>(value) <= static_cast<unsigned>(end)) [[likely]]
        return value;
    return value < -1 ? 0 : end;
}

/// `length` units and the terminator.
inline int withTerminator(std::int64_t length)
{
    if (length > LONGEST_TEXT)
        throwBadAllocation();
    return static_cast<int>(length) + 1;
}

} // namespace vx::detail
