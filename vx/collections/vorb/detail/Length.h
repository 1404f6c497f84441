#pragma once

#include "vx/Exceptions.h"

#include <algorithm>
#include <stdexcept>

namespace vx::collections::vorb::detail {

/// The largest size of a list.
constexpr int MAX_LENGTH = 0x3FFFFFFF;

/// Throws std::length_error with `message` if a list of `size` elements cannot take one more.
inline void checkLength(int size, const char* message)
{
    if (size >= MAX_LENGTH)
        throw std::length_error(message);
}

/// The new capacity for a full array of `capacity` elements that has to take one more.
constexpr int grownCapacity(int capacity) noexcept
{
    return std::clamp(capacity + capacity / 2, capacity + 1, MAX_LENGTH);
}

/// Throws RangeErrorException for an index below 0, or equal to or above `end`.
inline void checkIndex(int index, int end)
{
    if (index < 0 || index >= end)
        throw RangeErrorException();
}

} // namespace vx::collections::vorb::detail
