#pragma once

#include "vx/String.h"

#include <cstdint>

namespace vx::io::detail {

/// A handle on the file `path`, made with all rights of its owner when missing and `flags` say so. Throws ResultException
/// with what VXFileOpen says.
std::uint32_t openFile(const String& path, std::uint32_t flags);

} // namespace vx::io::detail
