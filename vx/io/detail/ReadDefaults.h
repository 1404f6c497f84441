#pragma once

#include "vx/io/detail/StreamChecks.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>

/// Default operations of byte streams and readers, for classes that implement only the block read.
namespace vx::io::detail {

template <class Unit, class Source>
int readUnit(Source& source)
{
    Unit unit {};
    return source.read(&unit, 1) > 0 ? static_cast<std::make_unsigned_t<Unit>>(unit) : -1;
}

template <class Unit, class Source>
std::int32_t skipByReading(Source& source, std::int32_t count)
{
    constexpr std::int32_t CHUNK = 256;
    Unit dropped[CHUNK];
    std::int32_t done = 0;
    while (done < count) {
        const std::int32_t wanted = std::min(count - done, CHUNK);
        const std::int32_t got = checkedCount(source.read(dropped, wanted), wanted);
        if (got < 0)
            break;
        done += got;
    }
    return done;
}

} // namespace vx::io::detail
