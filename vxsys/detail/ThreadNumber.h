#pragma once

#include <cstdint>

namespace vxsys::detail {

/// 0 until `threadNumber` has given the thread its number. Each lock operation reads it: the model saves a call, and takes
/// these few bytes from what the loader reserves for such variables.
[[gnu::tls_model("initial-exec")]] extern constinit thread_local std::uint64_t t_threadNumber;

std::uint64_t giveThreadNumber() noexcept;

/// A number of the calling thread, never 0, that no other thread of the process has or will ever have. The system gives
/// identifiers and handles of ended threads to new ones, so they cannot tell who owns a lock. The thread that calls `fork`
/// keeps its number in the child process.
inline std::uint64_t threadNumber() noexcept
{
    return t_threadNumber != 0 ? t_threadNumber : giveThreadNumber();
}

} // namespace vxsys::detail
