#pragma once

#include <string>

namespace vxlogd {

/// Prints a line to standard error.
void complain(const std::string& text);

} // namespace vxlogd
