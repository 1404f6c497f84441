#pragma once

#include "vx/io/detail/StreamChecks.h"

#include <algorithm>
#include <cstdint>

namespace vx::io::detail {

/// Holds at least one sequence of every encoding that the library brings but for those that say how much more they need.
inline constexpr std::int32_t MIN_BYTE_BUFFER_SIZE = 6;

template <class Converter>
std::int32_t byteBufferSize(std::int32_t size, Converter& converter)
{
    return std::max({size, MIN_BYTE_BUFFER_SIZE, std::int32_t {converter.getMaxBytesPerChar()}});
}

/// Converters also come from other libraries: one that does not move would keep its caller in a loop.
[[noreturn]] inline void throwStuckConverter()
{
    throwIo(u"character converter makes no progress");
}

/// An index that a converter has moved.
inline void requireIndex(std::int32_t index, std::int32_t before, std::int32_t end)
{
    if (index < before || index > end)
        throwIo(u"character converter left its buffer");
}

} // namespace vx::io::detail
