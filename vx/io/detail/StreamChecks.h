#pragma once

#include "vx/Reference.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace vx::io::detail {

/// The smallest buffer of buffered streams, in units.
inline constexpr std::int32_t MIN_BUFFER_SIZE = 16;

/// Throws IoException "stream closed".
[[noreturn]] void throwStreamClosed();
/// Throws IoException with `message`.
[[noreturn]] void throwIo(const char16_t* message);

inline void requireOpen(bool open)
{
    if (!open)
        throwStreamClosed();
}

/// A null stream is treated as a closed one.
template <class Stream>
Stream& opened(const Reference<Stream>& stream)
{
    requireOpen(stream.get() != nullptr);
    return *stream;
}

/// For transfers of at least one unit.
inline void requireUnits(const void* units)
{
    if (units == nullptr)
        throwIo(u"null buffer");
}

/// Checks the result of a read of `asked` units, because a source may return a larger number than it was asked for.
inline std::int32_t checkedCount(std::int32_t result, std::int32_t asked)
{
    if (result > asked)
        throwIo(u"stream read more than asked");
    return result;
}

inline std::int32_t saturated(std::int64_t count)
{
    return static_cast<std::int32_t>(std::min<std::int64_t>(count, std::numeric_limits<std::int32_t>::max()));
}

} // namespace vx::io::detail
