#pragma once

#include "vx/Exception.h"

#include <concepts>
#include <cstdint>
#include <exception>
#include <utility>

namespace vx::detail {

/// Decides whether a guard or a destructor may throw the failure of its release. It may, unless the block is left by an
/// exception: a second one would end the process.
class ReleaseReport {
public:
    /// For a guard: exceptions that are in flight when it begins do not count.
    ReleaseReport() noexcept
        : m_exceptionsAtStart(std::uncaught_exceptions())
    {
    }
    /// For the destructor of an object, which may begin in another block than it ends in: any exception counts.
    static ReleaseReport ofDestructor() noexcept { return ReleaseReport(0); }

    /// Throws ResultException for a negative `result`.
    void report(std::int32_t result) const
    {
        if (mayThrow())
            throwIfFailed(result);
    }
    /// Runs `release`, and passes what it throws.
    template <std::invocable Release>
    void run(Release&& release) const;

private:
    explicit ReleaseReport(int exceptionsAtStart) noexcept
        : m_exceptionsAtStart(exceptionsAtStart)
    {
    }

    bool mayThrow() const noexcept { return std::uncaught_exceptions() <= m_exceptionsAtStart; }

    int m_exceptionsAtStart;
};

template <std::invocable Release>
inline void ReleaseReport::run(Release&& release) const
{
    try {
        std::forward<Release>(release)();
    } catch (...) {
        if (mayThrow()) // the one that was caught does not count
            throw;
    }
}

} // namespace vx::detail
