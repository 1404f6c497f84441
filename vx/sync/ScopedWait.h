#pragma once

#include "vx/ThreadAnnotations.h"

#include <exception>

namespace vx::sync {

/// Holds what is waited for and signalled, a mutex or a semaphore, to the end of the block, however the block is left; null
/// is nothing to hold. Not counted: it outlives the guard. A failed release is told, unless an exception already on its way
/// out has more to tell.
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
        try {
            m_waitable->signal();
        } catch (...) {
            if (std::uncaught_exceptions() <= m_exceptionsAtStart)
                throw;
        }
    }
    ScopedWait(const ScopedWait&) = delete;
    ScopedWait& operator=(const ScopedWait&) = delete;

private:
    Waitable* const m_waitable;
    const int m_exceptionsAtStart = std::uncaught_exceptions();
};

} // namespace vx::sync
