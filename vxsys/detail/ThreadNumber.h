#pragma once

#include <cstdint>

namespace vxsys::detail {

/// 0 until `threadNumber` has given the thread a number. Each operation of a lock reads it. This model of thread-local
/// storage avoids a function call; it uses a few bytes of the space that the loader reserves for such variables.
[[gnu::tls_model("initial-exec")]] extern constinit thread_local std::uint64_t t_threadNumber;

std::uint64_t makeThreadNumber() noexcept;

/// A number of the calling thread, never 0, which is not used for any other thread of the process, before or after. The
/// system reuses the identifiers and handles of ended threads, so they cannot identify the owner of a lock. In a child
/// process the thread that called `fork` still has its number.
inline std::uint64_t threadNumber() noexcept
{
    return t_threadNumber != 0 ? t_threadNumber : makeThreadNumber();
}

} // namespace vxsys::detail
