#pragma once

#include "Options.h"
#include "common/Messages.h"

namespace vxconv {

/// Converts each file of the inputs to the target folder or in place; a folder stands for the files below it. A file
/// that fails is reported, stays as it is, and does not stop the others. Throws Failure with the number of these.
void convertAll(const Options& options, vxtools::Messages& messages);

} // namespace vxconv
