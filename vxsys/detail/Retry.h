#pragma once

#include <cerrno>
#include <concepts>

namespace vxsys::detail {

/// Makes a system call again for as long as a signal breaks it off (EINTR). Never for `close`: on Linux the descriptor
/// is gone then, and another thread may have its number already.
template <std::invocable Call>
auto retryOnSignal(Call&& call) noexcept
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

} // namespace vxsys::detail
