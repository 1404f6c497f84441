#pragma once

#include "vxsys/detail/Descriptor.h"

#include <cstdint>
#include <sys/types.h>

namespace vxsys::detail {

/// Collects the child when it ends, so that no zombie remains. `child` is a process descriptor (pidfd). Negative
/// results are failures: the child then remains a zombie until the calling process ends.
std::int32_t reapLater(Descriptor child) noexcept;
/// The same for a child by its number. It is collected within some milliseconds after its end.
std::int32_t reapLater(pid_t child) noexcept;

/// Reads and drops what is written to `pipe` until its last writer has closed it. Negative results are failures: the
/// pipe is then closed, and its writers get SIGPIPE.
std::int32_t drainLater(Descriptor pipe) noexcept;

} // namespace vxsys::detail
