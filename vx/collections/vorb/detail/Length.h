#pragma once

#include "vx/Exceptions.h"
#include "vx/Occasion.h"

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

[[noreturn]] inline void throwOutOfRange(int index, int size)
{
    throwDuring(
        u"use index", [&] { return String::valueOf(index) + u" of a list of " + String::valueOf(size); },
        RangeErrorException(), RESULT_INVALID_ARGUMENT);
}

/// Throws RangeErrorException if a list of `size` elements has none at `index`.
inline void checkIndex(int index, int size)
{
    if (index < 0 || index >= size)
        throwOutOfRange(index, size);
}

/// As above, but the end of the list is a position too.
inline void checkPosition(int index, int size)
{
    if (index < 0 || index > size)
        throwOutOfRange(index, size);
}

} // namespace vx::collections::vorb::detail
