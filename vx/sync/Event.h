#pragma once

#include "vx/sync/Object.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// A signal releases one thread that is waiting at that moment, and each signal another one. A signal that finds no such
/// thread stays, at most one of them, and the next wait takes it.
class VX_API Event : public Object {
public:
    /// `name` is a label for people; null for none. `flags` is 0.
    explicit Event(const char* name = nullptr, unsigned int flags = 0);
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;
    /// Throws ResultException while a thread waits, unless another exception is on its way.
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
