#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Operations on the names of files. Paths and results are those of vxsys/File.h.
extern "C" {

/// Gives a file another name in the same file system. RESULT_ALREADY_EXISTS, and no change, if a file has that name.
VXSYS_API std::int32_t VXFileRename(const char16_t* path, const char16_t* newPath) noexcept;
/// Removes a name. The file itself is removed with its last name and its last handle. RESULT_IS_DIRECTORY for a folder.
VXSYS_API std::int32_t VXFileRemove(const char16_t* path) noexcept;

/// Calls `take` with each name in a folder except "." and "..", in any order. Names that are not UTF-8, or that contain
/// a backslash, cannot be part of a path and are left out. `take` must not throw. A negative result of it ends the call
/// and is returned.
VXSYS_API std::int32_t VXFolderList(
    const char16_t* path, std::int32_t (*take)(void* context, const char16_t* name), void* context) noexcept;
}
