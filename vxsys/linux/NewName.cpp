#include "vxsys/linux/NewName.h"

#include "vxsys/detail/Steps.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace vxsys::detail {

int renameToNew(const char* path, const char* newPath) noexcept
{
    const int error = errorOf(::renameat2(AT_FDCWD, path, AT_FDCWD, newPath, RENAME_NOREPLACE));
    if (error != EINVAL && error != ENOSYS)
        return error;
    // A file system that cannot do both in one step. Between these two another program could take the name.
    return ::faccessat(AT_FDCWD, newPath, F_OK, AT_SYMLINK_NOFOLLOW) == 0 ? EEXIST : errorOf(::rename(path, newPath));
}

} // namespace vxsys::detail
