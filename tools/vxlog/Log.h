#pragma once

#include "Options.h"

namespace vxlog {

/// Makes an entry of each line of the input, until it ends or the program is asked to end. Everything that was read is in the
/// log then; where it is not, throws Failure.
void log(const Options& options);

} // namespace vxlog
