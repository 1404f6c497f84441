#pragma once

#include "vxsys/File.h"

namespace vxsys::detail {

/// As `statx` with the same first arguments. Returns a native error or 0. After an error `status` is all zero.
int readStatus(int folder, const char* path, int flags, VXFileStatus& status) noexcept;

} // namespace vxsys::detail
