#pragma once

#include "vxsys/Lock.h"

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <sys/time.h>

namespace vxsys::detail {

/// A moment on the monotonic clock, or never. Converts the milliseconds of a timed wait, and a wait without a limit.
class Deadline {
public:
    /// Never.
    constexpr Deadline() noexcept = default;

    /// `milliseconds` from now. `VX_WAIT_FOREVER` is never, and 0 a moment that has already passed.
    static Deadline in(std::uint32_t milliseconds) noexcept
    {
        if (milliseconds == VX_WAIT_FOREVER)
            return {};
        return after(milliseconds / 1000, static_cast<long>(milliseconds % 1000) * 1'000'000);
    }

    /// `time` from now; no part is negative. A time beyond some thirty years means never.
    static Deadline in(const timeval& time) noexcept;

    bool isNever() const noexcept { return m_never; }
    /// Whether it was made from 0, for a try without a wait.
    bool isAtOnce() const noexcept { return !m_never && m_time.tv_sec == 0 && m_time.tv_nsec == 0; }
    const timespec& time() const noexcept { return m_time; }

    bool isEarlierThan(const Deadline& other) const noexcept;
    bool hasPassed() const noexcept;

    /// The time from now until the deadline, 0 if it has passed. Not for a deadline that is never.
    timespec left() const noexcept;

    /// The milliseconds until the deadline, rounded up, so that waiting for them does not end early. `VX_WAIT_FOREVER`
    /// for never.
    std::uint32_t millisecondsLeft() const noexcept;

private:
    static constexpr long NANOSECONDS = 1'000'000'000;

    static timespec now() noexcept
    {
        timespec time;
        ::clock_gettime(CLOCK_MONOTONIC, &time);
        return time;
    }
    static Deadline after(std::int64_t seconds, long nanoseconds) noexcept;

    timespec m_time {};
    bool m_never = true;
};

inline Deadline Deadline::in(const timeval& time) noexcept
{
    constexpr std::int64_t NEVER_SECONDS = 1'000'000'000;
    constexpr long MICROSECONDS = 1'000'000;
    if (time.tv_sec >= NEVER_SECONDS || time.tv_usec / MICROSECONDS >= NEVER_SECONDS)
        return {};
    return after(time.tv_sec + time.tv_usec / MICROSECONDS, time.tv_usec % MICROSECONDS * 1000);
}

inline bool Deadline::isEarlierThan(const Deadline& other) const noexcept
{
    if (m_never || other.m_never)
        return !m_never && other.m_never;
    return m_time.tv_sec != other.m_time.tv_sec ? m_time.tv_sec < other.m_time.tv_sec
                                                : m_time.tv_nsec < other.m_time.tv_nsec;
}

inline bool Deadline::hasPassed() const noexcept
{
    Deadline current;
    current.m_time = now();
    current.m_never = false;
    return isEarlierThan(current);
}

inline timespec Deadline::left() const noexcept
{
    if (isAtOnce())
        return {};
    timespec rest = now();
    rest.tv_sec = m_time.tv_sec - rest.tv_sec;
    rest.tv_nsec = m_time.tv_nsec - rest.tv_nsec;
    if (rest.tv_nsec < 0) {
        rest.tv_nsec += NANOSECONDS;
        --rest.tv_sec;
    }
    return rest.tv_sec < 0 ? timespec {} : rest;
}

inline std::uint32_t Deadline::millisecondsLeft() const noexcept
{
    if (m_never)
        return VX_WAIT_FOREVER;
    const timespec rest = left();
    const std::int64_t milliseconds = std::int64_t {rest.tv_sec} * 1000 + (rest.tv_nsec + 999'999) / 1'000'000;
    return static_cast<std::uint32_t>(std::min<std::int64_t>(milliseconds, VX_WAIT_FOREVER - 1));
}

inline Deadline Deadline::after(std::int64_t seconds, long nanoseconds) noexcept
{
    Deadline deadline;
    deadline.m_never = false;
    if (seconds == 0 && nanoseconds == 0)
        return deadline;
    deadline.m_time = now();
    deadline.m_time.tv_sec += seconds;
    deadline.m_time.tv_nsec += nanoseconds;
    if (deadline.m_time.tv_nsec >= NANOSECONDS) {
        deadline.m_time.tv_nsec -= NANOSECONDS;
        ++deadline.m_time.tv_sec;
    }
    return deadline;
}

} // namespace vxsys::detail
