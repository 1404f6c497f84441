#pragma once

#include "vx/Object.h"
#include "vx/ThreadAnnotations.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// A condition with a lock of its own. A wait is made while the lock is held, gives it up and takes it again, and may end
/// early: look again at what it waits for. To wait or release without the lock, or to acquire it twice, is a
/// ResultException.
class VX_API VX_CAPABILITY("condition") Condition : public vx::Object {
public:
    class Holder;

    /// `name` labels it for a person; null is anonymous.
    explicit Condition(const char* name = nullptr, unsigned int flags = 0);
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;
    ~Condition() noexcept override;

    void acquire() VX_ACQUIRE();
    void release() VX_RELEASE();
    void wait() VX_REQUIRES(this);
    /// Throws ResultException with RESULT_TIMED_OUT when `milliseconds` ran out first; 0xFFFFFFFF waits for ever.
    void wait(std::uint32_t milliseconds) VX_REQUIRES(this);
    /// Frees one waiter.
    void signal();
    /// Frees all.
    void broadcast();

private:
    VXHandle m_handle = nullptr;
};

/// Holds a condition's lock to the end of the block. A failed release is told, unless an exception already on its way out
/// has more to tell.
class VX_API VX_SCOPED_CAPABILITY Condition::Holder {
public:
    explicit Holder(Condition& condition) VX_ACQUIRE(condition);
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() noexcept(false) VX_RELEASE();

private:
    Condition& m_condition;
    const int m_exceptionsAtStart;
};

} // namespace vx::sync
