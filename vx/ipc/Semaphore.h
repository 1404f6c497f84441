#pragma once

#include "vx/sync/AnySemaphore.h"
#include "vxsys/Named.h"

#include <cstdint>

namespace vx::ipc {

/// A semaphore that all processes of a user share by its name. Units that a process has taken and not signalled are
/// given back when it closes its last semaphore of that name, and when it ends or is killed.
class VX_API Semaphore : public sync::AnySemaphore {
public:
    /// `name` is any narrow text. `value`, at most 2^31 - 1, is the initial count if no process has the semaphore open.
    /// If the system cannot store files of named objects, the description of the exception says what to do.
    Semaphore(const char* name, std::uint32_t value);
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;
    /// Throws ResultException while a thread waits, unless another exception is in flight.
    ~Semaphore() noexcept(false) override;

    /// Stores a note on what the holder is about to write. The next holder finds it if this process is killed
    /// meanwhile. RESULT_ACCESS_DENIED for a process that does not hold the semaphore. A length of 0 means no note.
    void setNote(const VXNamedSemNote& note);
    VXNamedSemNote getNote();
};

} // namespace vx::ipc
