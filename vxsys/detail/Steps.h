#pragma once

#include <concepts>
#include <cstdint>

namespace vxsys::detail {

/// Runs one step after the other until one fails, and returns its failure. A step returns a result or a native error; in both
/// kinds 0 is success, and the steps of one chain are of one kind.
template <std::invocable... Steps>
std::int32_t inOrder(Steps&&... steps)
{
    std::int32_t failure = 0;
    static_cast<void>((((failure = steps()) == 0) && ...));
    return failure;
}

} // namespace vxsys::detail
