#pragma once

#include "vxsys/Lock.h"

#include <cstdint>
#include <ctime>

namespace vxsys::detail {

/// A moment on the monotonic clock, or never: where milliseconds and "for ever" meet.
class Deadline {
public:
    /// Never.
    constexpr Deadline() noexcept = default;

    /// `milliseconds` from now; `VX_WAIT_FOREVER` is never.
    static Deadline in(std::uint32_t milliseconds) noexcept
    {
        Deadline deadline;
        if (milliseconds == VX_WAIT_FOREVER)
            return deadline;
        ::clock_gettime(CLOCK_MONOTONIC, &deadline.m_time);
        deadline.m_time.tv_sec += milliseconds / 1000;
        deadline.m_time.tv_nsec += static_cast<long>(milliseconds % 1000) * 1'000'000;
        if (deadline.m_time.tv_nsec >= NANOSECONDS) {
            deadline.m_time.tv_nsec -= NANOSECONDS;
            ++deadline.m_time.tv_sec;
        }
        deadline.m_never = false;
        return deadline;
    }

    bool isNever() const noexcept { return m_never; }
    const timespec& time() const noexcept { return m_time; }

    bool isEarlierThan(const Deadline& other) const noexcept
    {
        if (m_never || other.m_never)
            return !m_never && other.m_never;
        return m_time.tv_sec != other.m_time.tv_sec ? m_time.tv_sec < other.m_time.tv_sec
                                                    : m_time.tv_nsec < other.m_time.tv_nsec;
    }
    bool hasPassed() const noexcept { return isEarlierThan(in(0)); }

private:
    static constexpr long NANOSECONDS = 1'000'000'000;

    timespec m_time {};
    bool m_never = true;
};

} // namespace vxsys::detail
