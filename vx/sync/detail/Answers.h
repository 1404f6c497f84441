#pragma once

#include "vx/Exception.h"
#include "vx/Result.h"

#include <cstdint>

namespace vx::sync::detail {

/// The answer of a timed wait: true for exactly 0, false for a time-out and for any other success. Throws
/// ResultException.
inline bool answerOfTimedWait(std::int32_t result)
{
    if (result == RESULT_TIMED_OUT)
        return false;
    throwIfFailed(result);
    return result == RESULT_OK;
}

} // namespace vx::sync::detail
