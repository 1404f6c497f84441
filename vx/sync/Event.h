#pragma once

#include "vx/sync/Object.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// Each signal releases one waiting thread. If no thread waits, one signal is kept for the next wait; further ones are
/// dropped.
class VX_API Event : public Object {
public:
    /// `name` is a label for diagnostics; null for none. `flags` is 0.
    explicit Event(const char* name = nullptr, unsigned int flags = 0);
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;
    /// Throws ResultException while a thread waits, unless another exception is in flight.
    ~Event() noexcept(false) override;

    // Object
    void wait() override;
    /// Always false. It takes no signal.
    bool tryWait() override;

    /// False if no signal came within `milliseconds`; `VX_WAIT_FOREVER` has no limit.
    virtual bool wait(std::uint32_t milliseconds);
    virtual void signal();

private:
    VXHandle m_handle = nullptr;
};

} // namespace vx::sync
