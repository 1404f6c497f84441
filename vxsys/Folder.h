#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Files by their names in a folder. Paths and results are those of vxsys/File.h.
extern "C" {

/// Gives a file another name on the same file system. A file that has that name already is left alone:
/// RESULT_ALREADY_EXISTS.
VXSYS_API std::int32_t VXFileRename(const char16_t* path, const char16_t* newPath) noexcept;
/// Removes a name. The file itself is removed with its last name and its last handle. RESULT_IS_DIRECTORY for a folder.
VXSYS_API std::int32_t VXFileRemove(const char16_t* path) noexcept;

/// Calls `take` with each name in a folder, in no order, without "." and "..". Names that are not UTF-8, or that have a
/// backslash in them, cannot be written in a path and are left out. `take` must not throw; a negative result of it ends
/// the call and is returned.
VXSYS_API std::int32_t VXFolderList(
    const char16_t* path, std::int32_t (*take)(void* context, const char16_t* name), void* context) noexcept;
}
