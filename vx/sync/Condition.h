#pragma once

#include "vx/Object.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// A condition with a lock of its own. Every wait, signal and broadcast is made while the lock is held; a wait gives it up
/// and takes it again. A wait may end early: look again at what it waits for.
class VX_API Condition : public vx::Object {
public:
    class Holder;

    explicit Condition(const char* name = nullptr, unsigned int flags = 0);
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;
    ~Condition() noexcept override;

    void acquire();
    void release();
    void wait();
    /// Throws ResultException with RESULT_TIMED_OUT when `milliseconds` ran out first; 0xFFFFFFFF waits for ever.
    void wait(std::uint32_t milliseconds);
    /// Frees one waiter.
    void signal();
    /// Frees all.
    void broadcast();

private:
    VXHandle m_handle = nullptr;
};

/// Holds a condition's lock to the end of the block. A failed release is told, unless an exception already on its way out
/// has more to tell.
class VX_API Condition::Holder {
public:
    explicit Holder(Condition& condition);
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() noexcept(false);

private:
    Condition& m_condition;
    const int m_exceptionsAtStart;
};

} // namespace vx::sync
