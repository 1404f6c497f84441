#pragma once

#include "vxsys/Module.h"

#include <cstdint>

namespace vxsys::detail {

/// Asks the system's loader; `*handle` stays where it has nothing.
bool loadLibrary(const char* name, VXLibHandle* handle) noexcept;

/// `VXModuleLibOpen` for a path of the operating system, which has a separator in it.
std::int32_t openLibraryFile(const char* path, VXLibHandle* handle) noexcept;

/// The same for code that nobody but the user and root has had a hand in: the file, and each folder on the way to it,
/// belongs to one of them, and no other may write there. A folder in which each may only touch his own will do.
/// RESULT_INVALID_NAME for a path that is no full one, RESULT_ACCESS_DENIED for a file that others may have changed.
std::int32_t openTrustedLibrary(const char16_t* path, VXLibHandle* handle) noexcept;

} // namespace vxsys::detail
