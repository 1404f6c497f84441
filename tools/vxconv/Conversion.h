#pragma once

#include "Files.h"
#include "Options.h"

namespace vxconv {

/// Throws Failure where there is no converter for one of the two encodings.
void requireEncodings(const Options& options);

/// Everything from `input` to `output`, flushed. Throws Failure.
void convert(const Options& options, const Input& input, const Output& output);

} // namespace vxconv
