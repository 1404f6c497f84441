#pragma once

#include "vx/Api.h"

#include <atomic>
#include <cstdint>

namespace vx::vorb {

/// Counts what keeps a component library in the process.
class VX_API Module {
public:
    std::uint32_t AddRef() noexcept { return ++m_lockCount; }
    std::uint32_t Release() noexcept { return --m_lockCount; }

private:
    std::atomic<std::uint32_t> m_lockCount {0};
};

} // namespace vx::vorb
