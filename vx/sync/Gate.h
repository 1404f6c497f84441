#pragma once

#include "vx/sync/Object.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// Lets every thread pass while it is open. It is created closed.
class VX_API Gate : public Object {
public:
    /// `name` is a label for diagnostics; null for none. `flags` is 0.
    explicit Gate(const char* name = nullptr, unsigned int flags = 0);
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;
    /// Throws ResultException while a thread waits, unless another exception is in flight.
    ~Gate() noexcept(false) override;

    // Object
    void wait() override;
    bool tryWait() override;

    /// False if it did not open within `milliseconds`; `VX_WAIT_FOREVER` has no limit.
    virtual bool wait(std::uint32_t milliseconds);
    /// Releases all waiting threads, even if the gate is closed at once.
    virtual void open();
    virtual void close();

private:
    VXHandle m_handle = nullptr;
};

} // namespace vx::sync
