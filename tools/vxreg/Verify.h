#pragma once

#include "common/Messages.h"

#include <string>
#include <vector>

namespace vxreg {

/// Tries component libraries without registering them, and prints a line for each problem. The libraries are loaded in
/// processes of their own. Throws vxtools::Failure after the last library if one has problems.
void verifyLibraries(const std::vector<std::string>& names, vxtools::Messages& messages);

} // namespace vxreg
