#pragma once

#include <cstdint>
#include <limits>

namespace vx::detail {

/// Truncates toward zero and limits the result to the range of the type. A NaN gives 0.
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
