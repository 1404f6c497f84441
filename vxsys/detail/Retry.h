#pragma once

#include <cerrno>
#include <concepts>

namespace vxsys::detail {

/// Repeats a system call as long as a signal interrupts it (EINTR). Not for `close`: on Linux the descriptor is already
/// closed then, and another thread may have got its number.
template <std::invocable Call>
auto retryOnSignal(Call&& call) noexcept
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

} // namespace vxsys::detail
