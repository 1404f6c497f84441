#pragma once

#include <cstdint>
#include <sys/types.h>

namespace vxsys::detail {

/// Opens the handle of a child, which is a descriptor of the process (pidfd). Unlike the child's number it never leads to
/// another process, and it tells the child's end also when another part of this process has collected the child. Returns a
/// native error or 0.
int openChildHandle(pid_t child, std::uint32_t& handle) noexcept;

} // namespace vxsys::detail
