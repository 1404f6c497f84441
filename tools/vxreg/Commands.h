#pragma once

#include <string>
#include <vector>

namespace vxreg {

extern const char* const USAGE;

/// Runs the command that the first argument names. Throws std::invalid_argument for a wrong command line, and Failure
/// or vx::Exception if the command fails.
void run(const std::vector<std::string>& arguments);

} // namespace vxreg
