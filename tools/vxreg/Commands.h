#pragma once

#include <string>
#include <vector>

namespace vxreg {

extern const char* const USAGE;

/// Runs the command that stands first. Throws std::invalid_argument for a wrong command line, Failure or vx::Exception for
/// what goes wrong.
void run(const std::vector<std::string>& arguments);

} // namespace vxreg
