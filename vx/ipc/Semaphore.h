#pragma once

#include "vx/sync/Object.h"
#include "vxsys/Named.h"

#include <cstdint>

namespace vx::ipc {

/// Counts for all processes of a user that know its name. What a process took and did not signal comes back to the others
/// when it closes its last semaphore of that name or dies, however it dies. Failures are ResultExceptions.
class VX_API Semaphore : public sync::Object {
public:
    /// `name` is any narrow text. `value`, at most 2^31 - 1, is the count of a semaphore that nobody has open.
    Semaphore(const char* name, std::uint32_t value);
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;
    ~Semaphore() noexcept(false) override;

    // Object
    void wait() override;
    bool tryWait() override;

    virtual void signal();
    /// The count of the moment.
    virtual std::int32_t getValue();

    /// What its holder is about to do, for whoever holds it next if this one dies over it. RESULT_ACCESS_DENIED for a
    /// process that does not hold it.
    void setNote(const VXNamedSemNote& note);
    VXNamedSemNote getNote();

private:
    VXHandle m_handle = nullptr;
};

} // namespace vx::ipc
