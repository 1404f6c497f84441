#pragma once

#include <sys/stat.h>
#include <unistd.h>

namespace vxsys::detail {

/// Whether a file with this status belongs to the user or root, and no other user may write to it.
inline bool isOnlyOurs(const struct stat& status, uid_t user = ::geteuid()) noexcept
{
    return (status.st_uid == user || status.st_uid == 0) && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

} // namespace vxsys::detail
