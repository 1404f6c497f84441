#pragma once

namespace vxsys::detail {

/// Renames a file in one step, unless the new name is taken. Returns the native error; 0 is success.
int renameToNew(const char* path, const char* newPath) noexcept;

} // namespace vxsys::detail
