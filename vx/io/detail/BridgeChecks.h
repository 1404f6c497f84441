#pragma once

#include "vx/io/detail/StreamChecks.h"

#include <algorithm>
#include <cstdint>

namespace vx::io::detail {

/// Enough for one sequence of every encoding of the library, except those that report that they need more.
inline constexpr std::int32_t MIN_BYTE_BUFFER_SIZE = 6;

template <class Converter>
std::int32_t byteBufferSize(std::int32_t size, Converter& converter)
{
    return std::max({size, MIN_BYTE_BUFFER_SIZE, std::int32_t {converter.getMaxBytesPerChar()}});
}

/// Converters may also come from other libraries. One that makes no progress would keep its caller in an endless loop.
[[noreturn]] inline void throwStuckConverter()
{
    throwIo(u"character converter makes no progress");
}

/// Checks an index that a converter has changed.
inline void requireIndex(std::int32_t index, std::int32_t before, std::int32_t end)
{
    if (index < before || index > end)
        throwIo(u"character converter left its buffer");
}

} // namespace vx::io::detail
