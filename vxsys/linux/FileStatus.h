#pragma once

#include "vxsys/File.h"

namespace vxsys::detail {

/// As `statx` with the same first arguments. Gives a native error, 0 for none; `status` is all zero behind one.
int readStatus(int folder, const char* path, int flags, VXFileStatus& status) noexcept;

} // namespace vxsys::detail
