#pragma once

#include "vxsys/ThreadAnnotations.h"
#include "vxsys/detail/ThreadNumber.h"

#include <atomic>
#include <cstdint>

namespace vxsys::detail {

/// The thread that holds a lock. Only the holder changes it, so every thread can tell whether it is the holder.
class VX_CAPABILITY("holder") LockHolder {
public:
    bool isCaller() const noexcept { return m_thread.load(std::memory_order_relaxed) == threadNumber(); }
    bool isNone() const noexcept { return m_thread.load(std::memory_order_relaxed) == NONE; }
    void setCaller() noexcept { m_thread.store(threadNumber(), std::memory_order_relaxed); }
    void clear() noexcept { m_thread.store(NONE, std::memory_order_relaxed); }

private:
    static constexpr std::uint64_t NONE = 0;

    std::atomic<std::uint64_t> m_thread {NONE};
};

} // namespace vxsys::detail
