#pragma once

#include "vx/Reference.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace vx::io::detail {

/// Of buffered streams, in units.
inline constexpr std::int32_t MIN_BUFFER_SIZE = 16;

/// IoException "stream closed".
[[noreturn]] void throwStreamClosed();
/// IoException with `message`.
[[noreturn]] void throwIo(const char16_t* message);

inline void requireOpen(bool open)
{
    if (!open)
        throwStreamClosed();
}

/// A stream that was never given has nothing to forward to, as if it were closed.
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

/// The answer of a read for `asked` units: a source that claims more has no units to show for it.
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
