#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Where files really lie, as the system's mount table has it.
extern "C" {

inline constexpr std::int32_t VX_MOUNT_LOCAL = 0;
/// A share of a Windows network: "//server/share".
inline constexpr std::int32_t VX_MOUNT_SHARE = 1;
/// "server:/folder".
inline constexpr std::int32_t VX_MOUNT_NFS = 2;
/// A volume of a NetWare server: "server/user".
inline constexpr std::int32_t VX_MOUNT_NCP = 3;

/// Finds the mount that holds `path`, a full path as `VXPathExpand` gives it: its kind, what is mounted, in the words of
/// the table and zero-terminated in `source` of `size` units (empty for VX_MOUNT_LOCAL), and the index in `path` of what
/// lies behind the mount's folder. No link is followed, and no server is asked. VXSYS4_MOUNTS names another table of the
/// form of /proc/self/mounts. Negative is failure; a path that is not on drive C: gives RESULT_PATH_NOT_FOUND.
VXSYS_API std::int32_t VXMountFind(
    const char16_t* path, std::int32_t* kind, char16_t* source, std::int32_t size, std::int32_t* behind) noexcept;
}
