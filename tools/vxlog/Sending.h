#pragma once

#include "Options.h"
#include "common/Input.h"
#include "common/Messages.h"

namespace vxlog {

/// Sends each line of the input to the server of the options. Throws Failure if not all are in its log.
void sendLines(const Options& options, const vxtools::Input& input, vxtools::Messages& messages);

} // namespace vxlog
