#pragma once

#include "vx/Object.h"
#include "vx/ThreadAnnotations.h"
#include "vx/detail/ReleaseReport.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// A condition together with a lock. A wait is made while the lock is held: it releases the lock, waits, and takes the
/// lock again. It may end early, so check again what you wait for. Waiting or releasing without holding the lock, and
/// acquiring it twice, throw ResultException.
class VX_API VX_CAPABILITY("condition") Condition : public vx::Object {
public:
    class Holder;

    /// `name` is a label for diagnostics; null for none. `flags` is 0.
    explicit Condition(const char* name = nullptr, unsigned int flags = 0);
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;
    /// No other thread may hold it or wait for it.
    ~Condition() noexcept override;

    void acquire() VX_ACQUIRE();
    void release() VX_RELEASE();
    void wait() VX_REQUIRES(this);
    /// Throws ResultException with RESULT_TIMED_OUT after `milliseconds`; `VX_WAIT_FOREVER` has no limit.
    void wait(std::uint32_t milliseconds) VX_REQUIRES(this);
    /// Releases one waiting thread.
    void signal();
    /// Releases all waiting threads.
    void broadcast();

    /// The names that std::lock_guard and std::unique_lock use.
    void lock() VX_ACQUIRE() { acquire(); }
    void unlock() VX_RELEASE() { release(); }

private:
    VXHandle m_handle = nullptr;
};

/// Holds a condition's lock to the end of the block. A failed release throws ResultException, unless the block is left
/// by an exception.
class VX_API VX_SCOPED_CAPABILITY Condition::Holder {
public:
    explicit Holder(Condition& condition) VX_ACQUIRE(condition);
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;
    ~Holder() noexcept(false) VX_RELEASE();

private:
    Condition& m_condition;
    const vx::detail::ReleaseReport m_report;
};

} // namespace vx::sync
