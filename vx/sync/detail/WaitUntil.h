#pragma once

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/sync/Condition.h"
#include "vxsys/detail/Deadline.h"

#include <cstdint>

namespace vx::sync::detail {

/// Waits for a signal of `condition` until the deadline. Returns false if it has passed. The wait may also end early.
inline bool waitUntil(Condition& condition, const vxsys::detail::Deadline& end) VX_REQUIRES(condition)
{
    const std::uint32_t left = end.millisecondsLeft();
    if (left == 0)
        return false;
    try {
        condition.wait(left);
    } catch (const ResultException& result) {
        if (result.getResult() != RESULT_TIMED_OUT)
            throw;
    }
    return true;
}

} // namespace vx::sync::detail
