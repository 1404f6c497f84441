#include "vxsys/posix/ReplaceFile.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Path.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/posix/Descriptor.h"
#include "vxsys/posix/FileStatus.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <concepts>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace vxsys::detail {

namespace {

using namespace vxsys::results;

constexpr mode_t PERMISSIONS = 0777;
constexpr mode_t ALL_MODE_BITS = 07777;
constexpr std::size_t NAME_SIZE = NAME_MAX + 1;

/// Where the file stands: its folder, open, and its name in it, behind all symbolic links.
class Place {
public:
    /// Gives a native error, 0 for none.
    int find(const char* path) noexcept
    {
        constexpr int MOST_LINKS = 40; // as many as the kernel follows
        char rest[NATIVE_PATH_SIZE];
        int error = copy(path, rest);
        m_folder.reset(AT_FDCWD);
        for (int links = 0; error == 0; ++links) {
            if (links > MOST_LINKS)
                return ELOOP;
            error = enter(rest);
            if (error != 0)
                return error;
            const ssize_t length = ::readlinkat(m_folder.get(), m_name, rest, sizeof rest);
            if (length == -1)
                return errno == EINVAL || errno == ENOENT ? 0 : errno; // no link, or nothing yet
            if (static_cast<std::size_t>(length) == sizeof rest)
                return ENAMETOOLONG;
            rest[length] = '\0';
        }
        return error;
    }

    int folder() const noexcept { return m_folder.get(); }
    const char* name() const noexcept { return m_name; }

private:
    static int copy(const char* path, char (&target)[NATIVE_PATH_SIZE]) noexcept
    {
        const std::size_t length = std::strlen(path);
        if (length >= sizeof target)
            return ENAMETOOLONG;
        std::memcpy(target, path, length + 1);
        return 0;
    }

    /// Takes `path`, seen from the folder so far, apart into the folder and the name.
    int enter(char* path) noexcept
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

    Descriptor m_folder;
    char m_name[NAME_SIZE] = "";
};

/// The new content under a name of its own, or yet under none. The name goes with the object unless it became the file's.
class Successor {
public:
    explicit Successor(const Place& place) noexcept
        : m_place(place)
    {
    }
    ~Successor()
    {
        if (*m_name != '\0')
            ::unlinkat(m_place.folder(), m_name, 0);
    }
    Successor(const Successor&) = delete;
    Successor& operator=(const Successor&) = delete;

    /// Without a name where the file system can: a kill then leaves nothing behind.
    int open(mode_t mode) noexcept
    {
        m_file.reset(
            retryOnSignal([&] { return ::openat(m_place.folder(), ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, mode); }));
        if (m_file.isOpen() || (errno != EOPNOTSUPP && errno != EISDIR && errno != ENOENT && errno != EINVAL))
            return m_file.isOpen() ? 0 : errno;
        return withNewName([&] {
            m_file.reset(retryOnSignal([&] {
                return ::openat(m_place.folder(), m_name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode);
            }));
            return m_file.isOpen();
        });
    }

    int write(const void* content, std::size_t length) const noexcept
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

    /// Takes over owner, mode and access list. The mode comes last: a change of owner takes bits away from it.
    int takeRights(int oldFile, const struct stat& old) const noexcept
    {
        struct stat own;
        if (::fstat(m_file.get(), &own) != 0)
            return errno;
        if ((own.st_uid != old.st_uid || own.st_gid != old.st_gid)
            && ::fchown(m_file.get(), old.st_uid, old.st_gid) != 0)
            return errno;
        constexpr const char* ACCESS_LIST = "system.posix_acl_access";
        char list[8192];
        const ssize_t size = ::fgetxattr(oldFile, ACCESS_LIST, list, sizeof list);
        if (size > 0) {
            if (::fsetxattr(m_file.get(), ACCESS_LIST, list, static_cast<std::size_t>(size), 0) != 0)
                return errno;
        } else if (size == -1 && errno != ENODATA && errno != ENOTSUP) {
            return errno;
        }
        return ::fchmod(m_file.get(), old.st_mode & ALL_MODE_BITS) == 0 ? 0 : errno;
    }

    /// Flushes the file and lets it take the place.
    int takePlace() noexcept
    {
        if (retryOnSignal([&] { return ::fsync(m_file.get()); }) != 0 && errno != EINVAL && errno != EROFS)
            return errno;
        if (*m_name == '\0') {
            char link[32];
            std::snprintf(link, sizeof link, "/proc/self/fd/%d", m_file.get());
            const int error = withNewName(
                [&] { return ::linkat(AT_FDCWD, link, m_place.folder(), m_name, AT_SYMLINK_FOLLOW) == 0; });
            if (error != 0)
                return error;
        }
        if (::renameat(m_place.folder(), m_name, m_place.folder(), m_place.name()) != 0)
            return errno;
        *m_name = '\0';
        return 0;
    }

    int file() const noexcept { return m_file.get(); }

private:
    /// Calls `make` with names until one is not taken.
    template <std::predicate Make>
    int withNewName(Make&& make) noexcept
    {
        static constinit std::atomic<unsigned> s_number = 0;
        for (;;) {
            char tail[40];
            const int tailLength
                = std::snprintf(tail, sizeof tail, ".%d-%u.new", static_cast<int>(::getpid()), s_number.fetch_add(1));
            const auto room = static_cast<int>(NAME_SIZE - 1) - tailLength;
            std::snprintf(m_name, sizeof m_name, "%.*s%s", room, m_place.name(), tail);
            if (make())
                return 0;
            if (errno == EEXIST)
                continue;
            const int error = errno;
            *m_name = '\0';
            return error;
        }
    }

    const Place& m_place;
    Descriptor m_file;
    char m_name[NAME_SIZE] = "";
};

/// Opens the file that is to go, to see that it may be written. None is no error.
int openOld(const Place& place, Descriptor& file, struct stat& status) noexcept
{
    file.reset(retryOnSignal([&] {
        return ::openat(place.folder(), place.name(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }));
    if (!file.isOpen())
        return errno == ENOENT ? 0 : errno == ENXIO ? EACCES : errno;
    if (::fstat(file.get(), &status) != 0)
        return errno;
    return S_ISREG(status.st_mode) ? 0 : EACCES;
}

} // namespace

std::int32_t replaceFile(
    const char* path, const void* content, std::size_t length, mode_t mode, VXFileStatus* status) noexcept
{
    Place place;
    Descriptor oldFile;
    struct stat old;
    int error = place.find(path);
    if (error == 0)
        error = openOld(place, oldFile, old);
    if (error != 0)
        return VXResultFromNative(error);

    Successor successor(place);
    // Nobody else may read what only the old file's readers may, not even for a moment.
    error = successor.open(oldFile.isOpen() ? S_IRUSR | S_IWUSR : mode & PERMISSIONS);
    if (error == 0)
        error = successor.write(content, length);
    if (error == 0 && oldFile.isOpen())
        error = successor.takeRights(oldFile.get(), old);
    if (error == 0)
        error = successor.takePlace();
    if (error == 0 && status != nullptr)
        error = readStatus(successor.file(), "", AT_EMPTY_PATH, *status);
    if (error == 0 && retryOnSignal([&] { return ::fsync(place.folder()); }) != 0 && errno != EINVAL && errno != EROFS)
        error = errno;
    return VXResultFromNative(error);
}

} // namespace vxsys::detail
