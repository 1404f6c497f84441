#pragma once

#include <string>

namespace vx {
class Exception;
}

namespace vxlogd {

/// A line on standard error.
void complain(const std::string& text);

/// What failed, for a person.
std::string textOf(const vx::Exception& failure);

} // namespace vxlogd
