#pragma once

#include <cstdint>
#include <sys/types.h>

namespace vxsys::detail {

/// Opens a descriptor of the child process (pidfd). Unlike the process number it never refers to another process, and
/// it reports the end of the child even if another part of this process collects it. Where the system has no such
/// descriptors, the handle has the number. Returns a native error or 0.
int openChildHandle(pid_t child, std::uint32_t& handle) noexcept;

} // namespace vxsys::detail
