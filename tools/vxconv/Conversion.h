#pragma once

#include "Files.h"
#include "Options.h"

namespace vxconv {

/// Throws Failure if there is no converter for one of the two encodings.
void requireEncodings(const Options& options);

/// Converts all of `input` to `output` and flushes it. Throws Failure.
void convert(const Options& options, const Input& input, const Output& output);

} // namespace vxconv
