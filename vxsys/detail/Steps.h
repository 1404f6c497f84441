#pragma once

#include <cerrno>
#include <concepts>
#include <cstdint>

namespace vxsys::detail {

// Functions report failures as return values and return early. The value is a native error (`int error`) or, if callers
// of the layer see it, a result (`std::int32_t result`); 0 is success in both kinds. Consecutive steps without other
// work between them are one call of `inOrder`.

/// Runs the steps one after another until one fails, and returns its failure. All steps of one call return the same
/// kind.
template <std::invocable... Steps>
std::int32_t inOrder(Steps&&... steps)
{
    std::int32_t failure = 0;
    static_cast<void>((((failure = steps()) == 0) && ...));
    return failure;
}

/// The native error of a system call that returns -1 if it fails; 0 if it succeeded.
inline int errorOf(std::int64_t outcome) noexcept
{
    return outcome == -1 ? errno : 0;
}

} // namespace vxsys::detail
