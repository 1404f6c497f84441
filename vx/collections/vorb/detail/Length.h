#pragma once

#include "vx/Exceptions.h"

#include <algorithm>
#include <stdexcept>

namespace vx::collections::vorb::detail {

/// What a list can hold.
constexpr int MAX_LENGTH = 0x3FFFFFFF;

/// Throws std::length_error with `message` where a list of `size` elements has no room for one more.
inline void checkLength(int size, const char* message)
{
    if (size >= MAX_LENGTH)
        throw std::length_error(message);
}

/// The capacity by which a full array of `capacity` elements takes one more.
constexpr int grownCapacity(int capacity) noexcept
{
    return std::clamp(capacity + capacity / 2, capacity + 1, MAX_LENGTH);
}

/// Throws RangeErrorException for an index outside 0 to `end`, which does not belong.
inline void checkIndex(int index, int end)
{
    if (index < 0 || index >= end)
        throw RangeErrorException();
}

} // namespace vx::collections::vorb::detail
