#pragma once

#include "common/Messages.h"

#include <vx/util/OptionTable.h>

#include <string>
#include <string_view>
#include <vector>

namespace vxreg {

std::string usage(const vx::util::OptionTable& options, vxtools::Messages& messages);

std::vector<std::string_view> commandNames();

struct Switches {
    bool isForMachine = false; ///< works on the registry of all users only
    bool isForced = false; ///< registers any component library that can be loaded
};

/// Runs the command that the first argument names. Throws std::invalid_argument for a wrong command line, and Failure
/// or vx::Exception if the command fails.
void run(const std::vector<std::string>& arguments, const Switches& switches, vxtools::Messages& messages);

} // namespace vxreg
