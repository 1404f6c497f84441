#include "vxsys/linux/NamedFolder.h"

#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/FolderEntries.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/Steps.h"
#include "vxsys/linux/ProcessIdentity.h"

#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vxsys::detail {

namespace {

constexpr mode_t OWNER_ALL = 0700;
constexpr mode_t OTHERS_ALL = 0077;
constexpr std::size_t NAME_SIZE = 64;

/// How often a process tries again while others create or remove folders at the same time.
constexpr int MOST_TRIES = 1000;

/// The name of the last folder that was found, and its user. An empty name means that none was found yet.
struct KnownFolder {
    uid_t user = 0;
    char name[NAME_SIZE] = "";
};
constinit KnownFolder g_known VX_GUARDED_BY(g_namedLock);

bool isPrivate(const struct stat& status) noexcept
{
    return S_ISDIR(status.st_mode) && status.st_uid == ::geteuid() && (status.st_mode & OTHERS_ALL) == 0;
}

void writeFirstName(char (&name)[NAME_SIZE]) noexcept
{
    std::snprintf(name, NAME_SIZE, "vxsys4-%u-%" PRIu64, static_cast<unsigned>(::geteuid()), processNamespace());
}

/// The folders of the user in the memory file system.
struct FolderSearch {
    int count = 0;
    char first[NAME_SIZE] = ""; ///< in the order of names

    int run(int memory) noexcept
    {
        char prefix[NAME_SIZE];
        writeFirstName(prefix);
        const std::size_t length = std::strlen(prefix);
        FolderEntries entries(memory);
        if (!entries.isOpen())
            return errno;
        count = 0;
        while (const char* const name = entries.next()) {
            struct stat status;
            if (std::strncmp(name, prefix, length) != 0 || (name[length] != '\0' && name[length] != '-')
                || std::strlen(name) >= NAME_SIZE || ::fstatat(memory, name, &status, AT_SYMLINK_NOFOLLOW) != 0
                || !isPrivate(status))
                continue;
            if (count++ == 0 || std::strcmp(name, first) < 0)
                std::strcpy(first, name);
        }
        return 0;
    }
};

/// Creates a folder under a name that no other user has taken.
int makeFolder(int memory, char (&name)[NAME_SIZE]) noexcept
{
    writeFirstName(name);
    const std::size_t length = std::strlen(name);
    for (int tries = 0; ::mkdirat(memory, name, OWNER_ALL) != 0; ++tries) {
        std::uint64_t random = 0;
        if (errno != EEXIST || tries == MOST_TRIES || ::getrandom(&random, sizeof random, 0) != sizeof random)
            return errno;
        std::snprintf(name + length, NAME_SIZE - length, "-%016" PRIx64, random);
    }
    // Sets the rights that the process's mask removed.
    return ::fchmodat(memory, name, OWNER_ALL, 0) == 0 ? 0 : errno;
}

} // namespace

int NamedFolder::open() noexcept
{
    if (g_known.user == ::geteuid() && *g_known.name != '\0' && enter(g_known.name))
        return 0;
    forget();
    const Descriptor memory(retryOnSignal([] { return ::open(MEMORY, O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!memory.isOpen())
        return errno;

    // Whether the new folder is the only one. If there are several, processes have started at the same time. Each of
    // them removes its own folder, unless it is already in use, and searches again.
    for (int triesLeft = MOST_TRIES; triesLeft > 0; --triesLeft) {
        FolderSearch search;
        if (const int error = search.run(memory.get()))
            return error;
        if (search.count == 0) {
            char made[NAME_SIZE];
            if (const int error
                = inOrder([&] { return makeFolder(memory.get(), made); }, [&] { return search.run(memory.get()); }))
                return error;
            if (search.count > 1 && enter(made)) {
                ::unlinkat(memory.get(), made, AT_REMOVEDIR); // fails, and leaves the folder, if it contains files
                close();
            }
        }
        const bool isDecided = search.count == 1 || (search.count > 1 && triesLeft == 1);
        if (isDecided && enter(search.first)) {
            std::strcpy(g_known.name, search.first);
            g_known.user = ::geteuid();
            return 0;
        }
        ::sched_yield();
    }
    return EBUSY;
}

void NamedFolder::writePath(const char* name, char (&path)[PATH_SIZE]) const noexcept
{
    std::snprintf(path, PATH_SIZE, "%s/%s/%s", MEMORY, g_known.name, name);
}

void NamedFolder::forget() noexcept
{
    *g_known.name = '\0';
}

/// Opens and locks the folder `name`. False if it has been removed, or does not belong to the user alone.
bool NamedFolder::enter(const char* name) noexcept
{
    char path[PATH_SIZE];
    std::snprintf(path, sizeof path, "%s/%s", MEMORY, name);
    m_descriptor = retryOnSignal([&] { return ::open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); });
    if (m_descriptor == -1)
        return false;
    struct stat status;
    // Checked after locking, because another process may have removed the folder before it released the lock.
    if (retryOnSignal([&] { return ::flock(m_descriptor, LOCK_EX); }) == 0 && ::fstat(m_descriptor, &status) == 0
        && isPrivate(status) && status.st_nlink > 0)
        return true;
    close();
    return false;
}

void NamedFolder::close() noexcept
{
    if (m_descriptor == -1)
        return;
    // Unlocks explicitly, because a child process that was forked meanwhile may share the descriptor.
    ::flock(m_descriptor, LOCK_UN);
    ::close(m_descriptor);
    m_descriptor = -1;
}

} // namespace vxsys::detail
