#pragma once

#include <cerrno>
#include <concepts>
#include <cstdint>

namespace vxsys::detail {

// Failures go up as numbers, by early return. A function gives a native error (`int error`) or, if callers of the layer see
// it, a result (`std::int32_t result`); in both kinds 0 is success. Steps that follow each other without any other work
// between them are one call of `inOrder`.

/// Runs one step after the other until one fails, and returns its failure. The steps of one chain are of one kind.
template <std::invocable... Steps>
std::int32_t inOrder(Steps&&... steps)
{
    std::int32_t failure = 0;
    static_cast<void>((((failure = steps()) == 0) && ...));
    return failure;
}

/// The native error of a call of the system that gives -1 if it fails; 0 if it did not.
inline int errorOf(std::int64_t outcome) noexcept
{
    return outcome == -1 ? errno : 0;
}

} // namespace vxsys::detail
