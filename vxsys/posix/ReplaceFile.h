#pragma once

#include "vxsys/File.h"

#include <cstddef>
#include <cstdint>
#include <sys/types.h>

namespace vxsys::detail {

/// Makes `length` bytes the content of the file `path`, written beside it, flushed and renamed: whatever breaks in, a kill or
/// a full disk, who opens the file finds the old content or the new, whole. The file keeps its owner, its mode and its access
/// list; one that is made gets `mode` less the process's mask. A symbolic link leads to the file that is replaced, and other
/// hard links keep the old content.
///
/// Denied where the file could not be written in place, where its folder lets nobody make files, where the owner cannot be
/// kept, and for what is no regular file. A failure leaves the old content, but for a folder that cannot be flushed. `*status`,
/// unless null, is that of the new file.
std::int32_t replaceFile(
    const char* path, const void* content, std::size_t length, mode_t mode, VXFileStatus* status = nullptr) noexcept;

} // namespace vxsys::detail
