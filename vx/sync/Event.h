#pragma once

#include "vx/sync/Object.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// A signal frees one that waits by then, each signal another one; where none is left, the event stays signalled until the
/// next one comes.
class VX_API Event : public Object {
public:
    /// `name` labels it for a person; null is anonymous.
    explicit Event(const char* name = nullptr, unsigned int flags = 0);
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;
    ~Event() noexcept(false) override;

    // Object
    void wait() override;
    /// Always false, and a signal that is there stays.
    bool tryWait() override;

    /// False when `milliseconds` ran out first; 0xFFFFFFFF waits for ever.
    virtual bool wait(std::uint32_t milliseconds);
    virtual void signal();

private:
    VXHandle m_handle = nullptr;
};

} // namespace vx::sync
