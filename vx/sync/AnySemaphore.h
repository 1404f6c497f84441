#pragma once

#include "vx/sync/Object.h"
#include "vxsys/Lock.h"

#include <cstdint>

namespace vx::sync {

/// The common base of the semaphores of one process and those that processes share: a count. A wait takes one, and
/// blocks while the count is 0; a signal adds one. Failures throw ResultException.
class VX_API AnySemaphore : public Object {
public:
    AnySemaphore(const AnySemaphore&) = delete;
    AnySemaphore& operator=(const AnySemaphore&) = delete;
    ~AnySemaphore() noexcept(false) override;

    // Object
    void wait() override;
    bool tryWait() override;

    /// Fails if the count would exceed 2^31 - 1.
    virtual void signal();
    /// The count at this moment.
    virtual std::int32_t getValue();

    /// False if the count was 0 for `milliseconds`; `VX_WAIT_FOREVER` has no limit.
    virtual bool waitFor(std::uint32_t milliseconds);

protected:
    AnySemaphore() noexcept = default;

    VXHandle m_handle = nullptr; ///< created and destroyed by the derived class
};

} // namespace vx::sync
