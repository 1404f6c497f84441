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

    /// `milliseconds` from now; `VX_WAIT_FOREVER` is never, and 0 a moment that has passed long ago.
    static Deadline in(std::uint32_t milliseconds) noexcept
    {
        Deadline deadline;
        if (milliseconds == VX_WAIT_FOREVER)
            return deadline;
        deadline.m_never = false;
        if (milliseconds == 0)
            return deadline;
        ::clock_gettime(CLOCK_MONOTONIC, &deadline.m_time);
        deadline.m_time.tv_sec += milliseconds / 1000;
        deadline.m_time.tv_nsec += static_cast<long>(milliseconds % 1000) * 1'000'000;
        if (deadline.m_time.tv_nsec >= NANOSECONDS) {
            deadline.m_time.tv_nsec -= NANOSECONDS;
            ++deadline.m_time.tv_sec;
        }
        return deadline;
    }

    bool isNever() const noexcept { return m_never; }
    /// Made for a try: there is nothing to wait for.
    bool isAtOnce() const noexcept { return !m_never && m_time.tv_sec == 0 && m_time.tv_nsec == 0; }
    const timespec& time() const noexcept { return m_time; }

    bool isEarlierThan(const Deadline& other) const noexcept
    {
        if (m_never || other.m_never)
            return !m_never && other.m_never;
        return m_time.tv_sec != other.m_time.tv_sec ? m_time.tv_sec < other.m_time.tv_sec
                                                    : m_time.tv_nsec < other.m_time.tv_nsec;
    }
    bool hasPassed() const noexcept
    {
        Deadline now;
        ::clock_gettime(CLOCK_MONOTONIC, &now.m_time);
        now.m_never = false;
        return isEarlierThan(now);
    }

private:
    static constexpr long NANOSECONDS = 1'000'000'000;

    timespec m_time {};
    bool m_never = true;
};

} // namespace vxsys::detail
