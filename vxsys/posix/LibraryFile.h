#pragma once

#include "vxsys/Module.h"

#include <cstdint>

namespace vxsys::detail {

/// Loads a library by the system's loader. If that fails, `*handle` does not change.
bool loadLibrary(const char* name, VXLibHandle* handle) noexcept;

/// `VXModuleLibOpen` for a path in the form of the operating system that contains a separator.
std::int32_t openLibraryFile(const char* path, VXLibHandle* handle) noexcept;

/// The same for code that only the user and root can have changed. The file and each folder of its path must belong to
/// one of them, and no other user may have the right to write there. A folder in which users can only change their own
/// files is allowed.
/// RESULT_INVALID_NAME for a path that is not a full one, RESULT_ACCESS_DENIED for a file that others may have changed.
std::int32_t openTrustedLibrary(const char16_t* path, VXLibHandle* handle) noexcept;

} // namespace vxsys::detail
