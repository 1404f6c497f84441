#pragma once

#include "vx/sync/AnySemaphore.h"

#include <cstdint>

namespace vx::sync {

/// The semaphore of one process.
class VX_API Semaphore : public AnySemaphore {
public:
    /// `value` is the first count, at most 2^31 - 1. `name` is a label for diagnostics; null for none. `flags` is 0.
    explicit Semaphore(std::uint32_t value = 0, const char* name = nullptr, unsigned int flags = 0);
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;
    /// Throws ResultException while a thread waits, unless another exception is in flight.
    ~Semaphore() noexcept(false) override;
};

} // namespace vx::sync
