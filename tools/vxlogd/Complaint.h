#pragma once

#include <string>

namespace vxlogd {

/// A line on standard error.
void complain(const std::string& text);

} // namespace vxlogd
