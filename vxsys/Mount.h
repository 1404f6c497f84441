#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Where files are really stored, by the system's mount table.
extern "C" {

inline constexpr std::int32_t VX_MOUNT_LOCAL = 0;
/// A share of a Windows network: "//server/share".
inline constexpr std::int32_t VX_MOUNT_SHARE = 1;
/// "server:/folder".
inline constexpr std::int32_t VX_MOUNT_NFS = 2;
/// A volume of a NetWare server: "server/user".
inline constexpr std::int32_t VX_MOUNT_NCP = 3;

/// Finds the mount of `path`, a full path as `VXPathExpand` writes it, and its kind. `source` of `size` units becomes
/// the text of the table for what is mounted, zero-terminated, or empty for VX_MOUNT_LOCAL. `*rest` becomes the index
/// in `path` of the part below the folder of the mount. Links are not followed, and no server is asked. The variable
/// VXSYS4_MOUNTS names another table in the form of /proc/self/mounts. Negative is failure; RESULT_PATH_NOT_FOUND for a
/// path that is not on drive C:.
VXSYS_API std::int32_t VXMountFind(
    const char16_t* path, std::int32_t* kind, char16_t* source, std::int32_t size, std::int32_t* rest) noexcept;
}
