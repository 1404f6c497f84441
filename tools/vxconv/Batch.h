#pragma once

#include "Options.h"
#include "common/Messages.h"

namespace vxconv {

/// Converts each file of the inputs to the target folder or in place; a folder stands for the files below it. A file
/// that fails is reported, stays as it is, and does not stop the others. If two inputs have one output, or an output is
/// an input, nothing is converted. Throws Failure with the number of files that were not converted.
void convertAll(const Options& options, vxtools::Messages& messages);

} // namespace vxconv
