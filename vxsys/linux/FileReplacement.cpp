#include "vxsys/linux/FileReplacement.h"

#include "vxsys/detail/Retry.h"
#include "vxsys/detail/Steps.h"
#include "vxsys/linux/FileStatus.h"
#include "vxsys/linux/ProcPaths.h"

#include <atomic>
#include <cerrno>
#include <concepts>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace vxsys::detail {

namespace {

constexpr mode_t ALL_MODE_BITS = 07777;

int copyPath(const char* path, char (&target)[NATIVE_PATH_SIZE]) noexcept
{
    const std::size_t length = std::strlen(path);
    if (length >= sizeof target)
        return ENAMETOOLONG;
    std::memcpy(target, path, length + 1);
    return 0;
}

/// Flushes to disk. EINVAL and EROFS mean that the descriptor has no disk, not that a disk failed.
int flush(int descriptor) noexcept
{
    const int error = errorOf(retryOnSignal([&] { return ::fsync(descriptor); }));
    return error != EINVAL && error != EROFS ? error : 0;
}

/// Calls `make` with names in the folder of `place` until one is free. Stores that one in `name`.
template <std::predicate<const char*> Make>
int withNewName(const FilePlace& place, char (&name)[FilePlace::NAME_SIZE], Make&& make) noexcept
{
    static constinit std::atomic<unsigned> s_number = 0;
    for (;;) {
        char tail[40];
        const int tailLength
            = std::snprintf(tail, sizeof tail, ".%d-%u.new", static_cast<int>(::getpid()), s_number.fetch_add(1));
        const auto room = static_cast<int>(FilePlace::NAME_SIZE - 1) - tailLength;
        char tried[FilePlace::NAME_SIZE];
        std::snprintf(tried, sizeof tried, "%.*s%s", room, place.name(), tail);
        if (make(tried)) {
            std::memcpy(name, tried, sizeof tried);
            return 0;
        }
        if (errno != EEXIST)
            return errno;
    }
}

/// Blocks all signals in the calling thread to the end of the block.
class [[nodiscard]] SignalPause {
public:
    SignalPause() noexcept
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalPause() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalPause(const SignalPause&) = delete;
    SignalPause& operator=(const SignalPause&) = delete;

private:
    sigset_t m_before;
};

} // namespace

int FilePlace::find(const char* path) noexcept
{
    constexpr int MOST_LINKS = 40; // as many as the kernel follows
    char rest[NATIVE_PATH_SIZE];
    if (const int error = copyPath(path, rest))
        return error;
    m_folder.reset(AT_FDCWD);
    for (int links = 0; links <= MOST_LINKS; ++links) {
        if (const int error = enter(rest))
            return error;
        if (const int error = readLink(rest))
            return error == EINVAL || error == ENOENT ? 0 : error; // no link, or no file yet
    }
    return ELOOP;
}

/// Reads the link that the present name is. As the system does by default (fs.protected_symlinks), it follows no link
/// of another user in a folder where all users may create files: it could lead to any file of the caller.
int FilePlace::readLink(char (&target)[NATIVE_PATH_SIZE]) const noexcept
{
    constexpr mode_t SHARED = S_ISVTX | S_IWOTH;
    if (::readlinkat(m_folder.get(), m_name, target, 1) == -1)
        return errno;
    const Descriptor link(
        retryOnSignal([&] { return ::openat(m_folder.get(), m_name, O_PATH | O_NOFOLLOW | O_CLOEXEC); }));
    struct stat own;
    struct stat folder;
    if (!link.isOpen() || ::fstat(link.get(), &own) != 0 || ::fstat(m_folder.get(), &folder) != 0)
        return errno;
    if ((folder.st_mode & SHARED) == SHARED && own.st_uid != ::geteuid() && own.st_uid != folder.st_uid)
        return EACCES;
    const ssize_t length = ::readlinkat(link.get(), "", target, sizeof target);
    if (length == -1)
        return errno;
    if (static_cast<std::size_t>(length) == sizeof target)
        return ENAMETOOLONG;
    target[length] = '\0';
    return 0;
}

/// Splits `path`, which is relative to the present folder, into its folder and its name.
int FilePlace::enter(char* path) noexcept
{
    char* slash = std::strrchr(path, '/');
    const char* name = slash != nullptr ? slash + 1 : path;
    if (*name == '\0')
        return EISDIR;
    if (std::strlen(name) >= sizeof m_name)
        return ENAMETOOLONG;
    std::strcpy(m_name, name);
    const char* folder = slash == nullptr ? "." : slash == path ? "/" : path;
    if (slash != nullptr && slash != path)
        *slash = '\0';
    const int entered
        = retryOnSignal([&] { return ::openat(m_folder.get(), folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (entered == -1)
        return errno;
    m_folder.reset(entered);
    return 0;
}

int FileReplacement::begin(const char* path, mode_t mode) noexcept
{
    m_process = ::getpid();
    return inOrder([&] { return m_place.find(path); }, [&] { return openOld(); },
        // Only the user may read it until it has the rights of the old file, which may be restricted.
        [&] { return openNew(m_old.isOpen() ? S_IRUSR | S_IWUSR : mode); });
}

int FileReplacement::write(const void* content, std::size_t length) const noexcept
{
    const char* bytes = static_cast<const char*>(content);
    while (length > 0) {
        const ssize_t written = retryOnSignal([&] { return ::write(m_file.get(), bytes, length); });
        if (written == -1)
            return errno;
        bytes += written;
        length -= static_cast<std::size_t>(written);
    }
    return 0;
}

int FileReplacement::commit(VXFileStatus* status) noexcept
{
    return inOrder([&] { return m_old.isOpen() ? takeRights() : 0; }, [&] { return flush(m_file.get()); },
        [&] { return takePlace(); },
        [&] { return status != nullptr ? readStatus(m_file.get(), "", AT_EMPTY_PATH, *status) : 0; },
        [&] { return flush(m_place.folder()); });
}

void FileReplacement::discard() noexcept
{
    if (*m_name != '\0' && ::getpid() == m_process) {
        ::unlinkat(m_place.folder(), m_name, 0);
        *m_name = '\0';
    }
}

/// Opens the file that is to be replaced, to check that it may be written. A missing file is no error.
int FileReplacement::openOld() noexcept
{
    m_old.reset(retryOnSignal([&] {
        return ::openat(m_place.folder(), m_place.name(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }));
    if (!m_old.isOpen())
        return errno == ENOENT ? 0 : errno == ENXIO ? EACCES : errno;
    struct stat status;
    if (::fstat(m_old.get(), &status) != 0)
        return errno;
    return S_ISREG(status.st_mode) ? 0 : EACCES;
}

int FileReplacement::openNew(mode_t mode) noexcept
{
    m_file.reset(
        retryOnSignal([&] { return ::openat(m_place.folder(), ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, mode); }));
    if (m_file.isOpen()) {
        if (::faccessat(AT_FDCWD, DescriptorPath(m_file.get()).get(), F_OK, AT_EACCESS)
            == 0) // the name is given to it through this path
            return 0;
    } else if (errno != EOPNOTSUPP && errno != EISDIR && errno != ENOENT && errno != EINVAL) {
        return errno;
    }
    return withNewName(m_place, m_name, [&](const char* name) {
        m_file.reset(retryOnSignal([&] {
            return ::openat(m_place.folder(), name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
        }));
        return m_file.isOpen();
    });
}

/// Copies owner, mode and access list. The mode is set last, because a change of the owner clears some of its bits.
int FileReplacement::takeRights() const noexcept
{
    struct stat own;
    struct stat old;
    if (::fstat(m_file.get(), &own) != 0 || ::fstat(m_old.get(), &old) != 0)
        return errno;
    if ((own.st_uid != old.st_uid || own.st_gid != old.st_gid) && ::fchown(m_file.get(), old.st_uid, old.st_gid) != 0)
        return errno == EPERM ? EACCES : errno; // otherwise the file would belong to another user
    constexpr const char* ACCESS_LIST = "system.posix_acl_access";
    char list[8192];
    const ssize_t size = ::fgetxattr(m_old.get(), ACCESS_LIST, list, sizeof list);
    if (size > 0) {
        if (::fsetxattr(m_file.get(), ACCESS_LIST, list, static_cast<std::size_t>(size), 0) != 0)
            return errno;
    } else if (size == -1 && errno != ENODATA && errno != ENOTSUP) {
        return errno;
    } else {
        ::fremovexattr(m_file.get(), ACCESS_LIST); // that of a folder for new files
    }
    return errorOf(::fchmod(m_file.get(), old.st_mode & ALL_MODE_BITS));
}

int FileReplacement::takePlace() noexcept
{
    const SignalPause pause;
    if (*m_name != '\0')
        return replaceOld();
    const DescriptorPath unnamed(m_file.get());
    const auto link = [&](const char* name) {
        return ::linkat(AT_FDCWD, unnamed.get(), m_place.folder(), name, AT_SYMLINK_FOLLOW) == 0;
    };
    if (!m_old.isOpen()) {
        if (link(m_place.name()))
            return 0;
        if (errno != EEXIST) // otherwise another process has created one meanwhile
            return errno;
    }
    return inOrder([&] { return withNewName(m_place, m_name, link); }, [&] { return replaceOld(); });
}

int FileReplacement::replaceOld() noexcept
{
    if (::renameat(m_place.folder(), m_name, m_place.folder(), m_place.name()) != 0)
        return errno;
    *m_name = '\0';
    return 0;
}

} // namespace vxsys::detail
