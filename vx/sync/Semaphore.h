#pragma once

#include "vx/sync/Object.h"
#include "vxsys/Lock.h"

namespace vx::sync {

/// Counts: a wait takes one, and blocks at 0; a signal gives one.
class VX_API Semaphore : public Object {
public:
    /// `value` is the count to begin with, at most 2^31 - 1.
    explicit Semaphore(std::uint32_t value = 0, const char* name = nullptr, unsigned int flags = 0);
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;
    ~Semaphore() noexcept(false) override;

    // Object
    void wait() override;
    bool tryWait() override;

    /// Throws ResultException where the count would go beyond 2^31 - 1.
    virtual void signal();
    /// The count of the moment.
    virtual std::int32_t getValue();

private:
    VXHandle m_handle = nullptr;
};

} // namespace vx::sync
