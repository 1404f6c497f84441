#pragma once

#include <cstdint>
#include <sys/types.h>

namespace vxsys::detail {

/// Collects the end of `child`, whom nobody will join, as soon as it comes: no zombie stays. Negative is failure, and then
/// the child's end is collected by nobody before the process's own.
std::int32_t reapLater(pid_t child) noexcept;

} // namespace vxsys::detail
