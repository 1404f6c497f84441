#pragma once

#include "common/Messages.h"

#include <string>
#include <vector>

namespace vxreg {

/// Tries component libraries without registering them, and prints a line for each problem. The libraries are loaded in
/// processes of their own. Throws vxtools::Failure after the last library if one has problems.
void verifyLibraries(const std::vector<std::string>& names, vxtools::Messages& messages);

/// Tries a component library in the same way before it is registered. Throws vxtools::Failure if it can never be used,
/// or if the registry has one of its classes or names for another library, whose file exists.
void requireRegistrable(const std::string& path, vxtools::Messages& messages);

} // namespace vxreg
