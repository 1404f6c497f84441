#pragma once

#include "vx/String.h"

#include <cstdint>

namespace vx::io::detail {

/// Opens the file `path`. If it is missing and `flags` allow it, it is created with all rights for its owner. Throws
/// ResultException with the result of VXFileOpen.
std::uint32_t openFile(const String& path, std::uint32_t flags);

} // namespace vx::io::detail
