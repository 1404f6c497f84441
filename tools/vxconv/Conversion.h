#pragma once

#include "Options.h"
#include "common/Messages.h"

namespace vxconv {

/// Throws Failure if there is no converter for an encoding of the options.
void requireEncodings(const Options& options);

/// Converts all of `input` to `output`, which is complete or untouched; "-" is a standard stream. Throws Failure.
void convertFile(
    const Options& options, const std::string& input, const std::string& output, vxtools::Messages& messages);

} // namespace vxconv
