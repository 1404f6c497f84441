#pragma once

#include <sys/stat.h>
#include <unistd.h>

namespace vxsys::detail {

/// Whether what the system says so of is the user's or root's, and nobody else may write to it.
inline bool isOnlyOurs(const struct stat& status, uid_t user = ::geteuid()) noexcept
{
    return (status.st_uid == user || status.st_uid == 0) && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

} // namespace vxsys::detail
