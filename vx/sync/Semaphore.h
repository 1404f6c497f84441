#pragma once

#include "vx/sync/Object.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// A count. A wait takes one, and blocks while the count is 0; a signal adds one.
class VX_API Semaphore : public Object {
public:
    /// `value` is the first count, at most 2^31 - 1. `name` is a label for people; null for none. `flags` is 0.
    explicit Semaphore(std::uint32_t value = 0, const char* name = nullptr, unsigned int flags = 0);
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;
    /// Throws ResultException while a thread waits, unless another exception is on its way.
    ~Semaphore() noexcept(false) override;

    // Object
    void wait() override;
    bool tryWait() override;

    /// Throws ResultException if the count would exceed 2^31 - 1.
    virtual void signal();
    /// The count at this moment.
    virtual std::int32_t getValue();

private:
    VXHandle m_handle = nullptr;
};

} // namespace vx::sync
