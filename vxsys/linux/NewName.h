#pragma once

namespace vxsys::detail {

/// Renames a file in one step, unless the new name exists. Returns a native error or 0.
int renameToNew(const char* path, const char* newPath) noexcept;

} // namespace vxsys::detail
