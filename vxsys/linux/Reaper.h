#pragma once

#include "vxsys/detail/Descriptor.h"

#include <cstdint>

namespace vxsys::detail {

/// Collects a child that is not joined as soon as it ends, so that no zombie stays. `child` is a descriptor of
/// the process (pidfd). After a failure, which is negative, the child stays a zombie until the calling process ends.
std::int32_t reapLater(Descriptor child) noexcept;

/// Reads and drops what is written to `pipe` until its last writer has closed it. After a failure, which is negative, the
/// pipe is closed and its writers get SIGPIPE.
std::int32_t drainLater(Descriptor pipe) noexcept;

} // namespace vxsys::detail
