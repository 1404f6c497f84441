#pragma once

#include <cstdint>
#include <limits>

namespace vx::detail {

/// Toward zero. What lies beyond the range is clipped to it; a NaN is 0.
inline std::int64_t truncated(double value) noexcept
{
    constexpr double LIMIT = 0x1p63;

    if (value >= LIMIT)
        return std::numeric_limits<std::int64_t>::max();
    if (value < -LIMIT)
        return std::numeric_limits<std::int64_t>::min();
    return value == value ? static_cast<std::int64_t>(value) : 0;
}

} // namespace vx::detail
