#include "vxsys/posix/NamedFolder.h"

#include "vxsys/detail/Retry.h"
#include "vxsys/posix/ProcessIdentity.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vxsys::detail {

namespace {

constexpr mode_t OWNER_ALL = 0700;
constexpr mode_t OTHERS_ALL = 0077;

} // namespace

NamedFolder::~NamedFolder()
{
    if (m_descriptor == -1)
        return;
    // By name, not by the closing: a child process that was made meanwhile may share the descriptor.
    ::flock(m_descriptor, LOCK_UN);
    ::close(m_descriptor);
}

int NamedFolder::open() noexcept
{
    char path[PATH_SIZE];
    writePath("", path);
    if (::mkdir(path, OWNER_ALL) == 0)
        ::chmod(path, OWNER_ALL); // whatever the process's mask has taken away
    else if (errno != EEXIST)
        return errno;

    m_descriptor = retryOnSignal([&] { return ::open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); });
    if (m_descriptor == -1)
        return errno == ELOOP || errno == ENOTDIR ? EACCES : errno;
    struct stat status;
    if (::fstat(m_descriptor, &status) != 0)
        return errno;
    if (status.st_uid != ::geteuid() || (status.st_mode & OTHERS_ALL) != 0)
        return EACCES; // somebody else was here first: all may write to the folder above
    return retryOnSignal([&] { return ::flock(m_descriptor, LOCK_EX); }) == 0 ? 0 : errno;
}

void NamedFolder::writePath(const char* name, char (&path)[PATH_SIZE]) noexcept
{
    std::snprintf(path, PATH_SIZE, "/dev/shm/vxsys4-%u-%" PRIu64 "/%s", static_cast<unsigned>(::geteuid()),
        processNamespace(), name);
}

} // namespace vxsys::detail
