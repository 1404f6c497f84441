#pragma once

#include "vx/Exception.h"
#include "vx/Result.h"

#include <cstdint>
#include <exception>

namespace vx::sync::detail {

/// The answer of a timed wait: true for exactly 0, false for a time-out and for any other success. Throws ResultException.
inline bool answerOfTimedWait(std::int32_t result)
{
    if (result == RESULT_TIMED_OUT)
        return false;
    throwIfFailed(result);
    return result == RESULT_OK;
}

/// For destructors: throws ResultException for a failed destruction, unless an exception is on its way already. A second
/// one would end the process.
inline void throwIfDestructionFailed(std::int32_t result)
{
    if (std::uncaught_exceptions() == 0)
        throwIfFailed(result);
}

} // namespace vx::sync::detail
