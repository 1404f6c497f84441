#pragma once

#include "Options.h"
#include "common/Messages.h"

namespace vxview {

/// What the program found, and whether all logs could be read.
struct Outcome {
    bool hasFound = false;
    bool hasFailed = false;
};

/// Does what the options say. A log that cannot be read is reported, and the others are shown. Throws Failure if the
/// output cannot be written.
Outcome view(const Options& options, vxtools::Messages& messages);

} // namespace vxview
