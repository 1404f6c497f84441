#pragma once

#include "vx/ThreadAnnotations.h"
#include "vx/detail/ReleaseReport.h"

namespace vx::sync {

/// Holds a mutex, a semaphore or anything else with `wait` and `signal` to the end of the block, however the block is
/// left. Null holds nothing. Adds no reference: the object must outlive the guard. A failed release throws, unless the
/// block is left by an exception.
template <class Waitable>
class [[nodiscard]] ScopedWait {
public:
    explicit ScopedWait(Waitable* waitable) VX_NO_THREAD_SAFETY_ANALYSIS : m_waitable(waitable)
    {
        if (m_waitable != nullptr)
            m_waitable->wait();
    }
    ~ScopedWait() noexcept(false) VX_NO_THREAD_SAFETY_ANALYSIS
    {
        if (m_waitable == nullptr)
            return;
        m_report.run([this]() VX_NO_THREAD_SAFETY_ANALYSIS { m_waitable->signal(); });
    }
    ScopedWait(const ScopedWait&) = delete;
    ScopedWait& operator=(const ScopedWait&) = delete;

private:
    Waitable* const m_waitable;
    const vx::detail::ReleaseReport m_report;
};

} // namespace vx::sync
