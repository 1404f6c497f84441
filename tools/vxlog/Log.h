#pragma once

#include "Options.h"
#include "common/Messages.h"

namespace vxlog {

/// Writes an entry for each line of the input, until the input ends or a signal requests the end. When it returns,
/// everything that was read is in the log; otherwise it throws Failure.
void log(const Options& options, vxtools::Messages& messages);

} // namespace vxlog
