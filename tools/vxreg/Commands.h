#pragma once

#include <vx/util/OptionTable.h>

#include <string>
#include <string_view>
#include <vector>

namespace vxreg {

std::string usage(const vx::util::OptionTable& options);

std::vector<std::string_view> commandNames();

/// Runs the command that the first argument names. Throws std::invalid_argument for a wrong command line, and Failure
/// or vx::Exception if the command fails.
void run(const std::vector<std::string>& arguments);

} // namespace vxreg
