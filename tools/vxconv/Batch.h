#pragma once

#include "Options.h"
#include "common/Messages.h"

namespace vxconv {

/// Converts each file of the inputs, where a folder stands for all the files below it, to the target folder or in place.
/// A file that fails is reported, stays as it is, and does not stop the others. Throws Failure with their number.
void convertAll(const Options& options, vxtools::Messages& messages);

} // namespace vxconv
