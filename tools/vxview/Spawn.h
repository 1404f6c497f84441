#pragma once

#include <sys/types.h>

namespace vxview {

/// Starts the program `arguments[0]` with other standard streams than those of this program, where they are not -1. A
/// broken pipe ends it silently, although this program ignores the signal. Returns 0, or an error of the system.
int spawn(pid_t& process, char* const* arguments, int input, int output);

} // namespace vxview
