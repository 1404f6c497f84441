#include "vxsys/linux/FileStatus.h"

#include <cerrno>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace vxsys::detail {

namespace {

std::int64_t nanosecondsOf(const statx_timestamp& time) noexcept
{
    return time.tv_sec * 1'000'000'000 + time.tv_nsec;
}

} // namespace

int readStatus(int folder, const char* path, int flags, VXFileStatus& status) noexcept
{
    status = {};
    struct statx native { };
    if (::statx(folder, path, flags, STATX_INO | STATX_BTIME | STATX_SIZE | STATX_MTIME, &native) != 0)
        return errno;
    status.identity.volume = makedev(native.stx_dev_major, native.stx_dev_minor);
    status.identity.number = native.stx_ino;
    if ((native.stx_mask & STATX_BTIME) != 0)
        status.identity.born = nanosecondsOf(native.stx_btime);
    status.size = static_cast<std::int64_t>(native.stx_size);
    status.modified = nanosecondsOf(native.stx_mtime);
    return 0;
}

} // namespace vxsys::detail
