#pragma once

#include "vx/Api.h"
#include "vx/Result.h"

#include <concepts>
#include <cstdint>
#include <utility>

namespace vx::vorb {

/// The result code of the exception in flight: that of an `Exception`, RESULT_OUT_OF_MEMORY for std::bad_alloc,
/// RESULT_FAIL for anything else. Call it from a handler only. The unwinding that `pthread_exit` starts is not caught.
VX_API std::int32_t resultOfCurrentException();

/// Runs the work of a component operation; what it throws becomes the result.
template <std::invocable Work>
std::int32_t atBoundary(Work&& work)
{
    try {
        std::forward<Work>(work)();
        return RESULT_OK;
    } catch (...) {
        return resultOfCurrentException();
    }
}

/// As above for work that returns a result code.
template <std::invocable Work>
std::int32_t resultAtBoundary(Work&& work)
{
    try {
        return std::forward<Work>(work)();
    } catch (...) {
        return resultOfCurrentException();
    }
}

/// As `atBoundary` for work with a result value. `*out` is cleared first, so that it is never undefined after a
/// failure.
template <typename Out, std::invocable Work>
std::int32_t atBoundary(Out* out, Work&& work)
{
    if (out == nullptr)
        return RESULT_POINTER;
    *out = Out {};
    return atBoundary([&] { *out = std::forward<Work>(work)(); });
}

} // namespace vx::vorb
