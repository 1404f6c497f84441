#include "vxsys/posix/RegistryStore.h"

#include "vxsys/detail/FolderEntries.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/StateLock.h"
#include "vxsys/detail/Steps.h"
#include "vxsys/posix/Ownership.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <iterator>
#include <limits>
#include <map>
#include <mutex>
#include <new>
#include <pwd.h>
#include <span>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vxsys::detail {

namespace {

using namespace vxsys::results;

constexpr const char* RECORD_NAME = "key";
constexpr const char* PENDING_NAME = "pending";
constexpr std::string_view FOLDER_MARK = "k-";

constexpr std::size_t WHOLE_FILE = std::numeric_limits<std::size_t>::max();

const char* const HIVES[] = {"classes-32", "config-32", "user", "classes-64", "config-64"};

int openFolderAt(int parent, const char* name) noexcept
{
    return retryOnSignal([&] { return ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); });
}

/// The result of a system call that returns -1 if it fails.
std::int32_t resultOf(int outcome) noexcept
{
    return VXResultFromNative(errorOf(outcome));
}

/// The result for an error inside the store. A link or a plain file in the place of a folder was not made by this
/// library.
std::int32_t resultOfErrno() noexcept
{
    return errno == ELOOP || errno == ENOTDIR ? RESULT_STORE_CORRUPT : VXResultFromNative(errno);
}

/// The user's home folder from the user database. It is stored because reading that takes longer than everything else,
/// and a service without an environment would need it for each value. No destructor, because values may be read until
/// the very end of the process. A thread that cannot lock at once reads the database: in a forked child process the lock
/// may stay locked for ever.
struct KnownHome {
    StateLock lock;
    bool isKnown VX_GUARDED_BY(lock) = false;
    uid_t user VX_GUARDED_BY(lock) = 0;
    char path[1024] VX_GUARDED_BY(lock) {};
};
constinit KnownHome g_home;

/// The user's home folder, from the user database, because the environment may be that of another user.
std::string homeFromRecords()
{
    const uid_t user = ::geteuid();
    if (g_home.lock.tryLock()) {
        const StateGuard guard(g_home.lock, std::adopt_lock);
        if (g_home.isKnown && g_home.user == user)
            return g_home.path;
    }
    std::string buffer(4096, '\0');
    struct passwd entry;
    struct passwd* found = nullptr;
    while (::getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found) == ERANGE)
        buffer.resize(buffer.size() * 2);
    if (found == nullptr)
        return "";
    std::string home = found->pw_dir;
    if (home.size() < sizeof KnownHome::path && g_home.lock.tryLock()) {
        const StateGuard guard(g_home.lock, std::adopt_lock);
        std::strcpy(g_home.path, home.c_str());
        g_home.user = user;
        g_home.isKnown = true;
    }
    return home;
}

std::string variable(const char* name)
{
    const char* value = ::secure_getenv(name);
    return value != nullptr ? value : "";
}

std::int32_t flush(int descriptor) noexcept
{
    return resultOf(retryOnSignal([&] { return ::fsync(descriptor); }));
}

/// Flushes a folder in which another one was created. The user may have no right to read it.
std::int32_t flushFolder(const char* path) noexcept
{
    const Descriptor folder(retryOnSignal([&] { return ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!folder.isOpen())
        return errno != EACCES ? VXResultFromNative(errno) : RESULT_OK;
    return flush(folder.get());
}

/// Creates a folder and all folders above it, with rights for the user alone. They are flushed, because a change is not
/// on the disk as long as the way to it is not.
std::int32_t makeFolders(const std::string& path)
{
    std::string above = "/";
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        std::string folder = path.substr(0, end);
        if (::mkdir(folder.c_str(), S_IRWXU) == 0) {
            if (const std::int32_t result = flushFolder(above.c_str()); failed(result))
                return result;
        } else if (errno != EEXIST) {
            return VXResultFromNative(errno);
        }
        if (end == path.npos)
            return RESULT_OK;
        above = std::move(folder);
    }
}

/// Calls `visit` with the name of each entry of a folder until a call fails.
template <class Visit>
std::int32_t forEachEntry(int folder, Visit&& visit)
{
    FolderEntries entries(folder);
    if (!entries.isOpen())
        return resultOfErrno();
    while (const char* name = entries.next()) {
        if (const std::int32_t result = visit(name); failed(result))
            return result;
    }
    return VXResultFromNative(errno);
}

/// Removes a file, or a folder with its contents. Succeeds if there is nothing.
std::int32_t removeTree(int parent, const char* name)
{
    if (::unlinkat(parent, name, 0) == 0 || errno == ENOENT)
        return RESULT_OK;
    if (errno != EISDIR && errno != EPERM) // the errors of POSIX and Linux for a folder
        return VXResultFromNative(errno);
    const Descriptor folder(openFolderAt(parent, name));
    if (!folder.isOpen())
        return resultOfErrno();
    return inOrder(
        [&] { return forEachEntry(folder.get(), [&](const char* entry) { return removeTree(folder.get(), entry); }); },
        [&] { return resultOf(::unlinkat(parent, name, AT_REMOVEDIR)); });
}

/// The first units of a file, at most `limit`. RESULT_NOT_FOUND if there is no file.
std::int32_t readFile(int folder, const char* name, std::size_t limit, std::u16string& units, struct stat& status)
{
    const Descriptor file(
        retryOnSignal([&] { return ::openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC); }));
    if (!file.isOpen())
        return resultOfErrno();
    if (::fstat(file.get(), &status) != 0)
        return VXResultFromNative(errno);
    if (!isOnlyOurs(status))
        return RESULT_ACCESS_DENIED;
    if (!S_ISREG(status.st_mode) || status.st_size % sizeof(char16_t) != 0)
        return RESULT_STORE_CORRUPT;

    units.resize(std::min(static_cast<std::size_t>(status.st_size) / sizeof(char16_t), limit));
    auto* target = reinterpret_cast<char*>(units.data());
    for (std::size_t rest = units.size() * sizeof(char16_t); rest > 0;) {
        const ssize_t got = retryOnSignal([&] { return ::read(file.get(), target, rest); });
        if (got <= 0)
            return got < 0 ? VXResultFromNative(errno) : RESULT_STORE_CORRUPT;
        target += got;
        rest -= static_cast<std::size_t>(got);
    }
    return RESULT_OK;
}

/// Opens a folder many levels below another one, in as few calls as the system's limit for paths allows.
class Walk {
public:
    explicit Walk(int start)
        : m_start(start)
    {
    }

    std::int32_t go(std::string_view name)
    {
        if (m_path.size() + name.size() + 2 > PATH_MAX) {
            if (const std::int32_t result = enter(); failed(result))
                return result;
        }
        if (!m_path.empty())
            m_path += '/';
        m_path += name;
        return RESULT_OK;
    }
    std::int32_t enter()
    {
        Descriptor next(openFolderAt(folder(), m_path.c_str()));
        if (!next.isOpen())
            return resultOfErrno();
        m_reached = std::move(next);
        m_path.clear();
        return RESULT_OK;
    }

    int folder() const noexcept { return m_reached.isOpen() ? m_reached.get() : m_start; }
    const char* path() const noexcept { return m_path.c_str(); }
    Descriptor release() noexcept { return std::move(m_reached); }

private:
    const int m_start;
    Descriptor m_reached;
    std::string m_path;
};

std::int32_t goTo(Walk& walk, ENUM_VX_HKEY hive, const RegistryPath& path, std::size_t count)
{
    if (static_cast<std::size_t>(hive) >= std::size(HIVES))
        return RESULT_INVALID_ARGUMENT;
    if (const std::int32_t result = walk.go(HIVES[hive]); failed(result))
        return result;
    for (const RegistryStep& step : std::span(path.steps()).first(count)) {
        if (const std::int32_t result = walk.go(step.fileName); failed(result))
            return result;
    }
    return RESULT_OK;
}

/// Held by the one thread that makes a change. The lock of the file alone is not enough: it belongs to the whole
/// process, and closing the file anywhere in the process releases it.
constinit std::mutex g_changes;

/// In a child process no other thread makes a change, but its copy of the turn may be that of a thread of its parent. A
/// fork does not wait for the turn, because a change may wait for other processes.
void freeTurnInChild() noexcept
{
    static constinit std::atomic<bool> s_handlesForks = false;
    handleForks(s_handlesForks, nullptr, nullptr, [] { ::new (&g_changes) std::mutex; });
}

} // namespace

std::string RegistryStore::place()
{
    if (std::string named = variable(PLACE_VARIABLE); !named.empty())
        return named;
    std::string data = variable("XDG_DATA_HOME");
    if (data.empty() || data.front() != '/') {
        std::string home = variable("HOME");
        data = (home.empty() ? homeFromRecords() : home) + "/.local/share";
    }
    return data + "/vxsys4/registry";
}

const char* RegistryStore::machinePlace() noexcept
{
    const char* named = ::secure_getenv("VXSYS4_MACHINE_REGISTRY");
    return named != nullptr ? named : VXSYS_MACHINE_REGISTRY;
}

std::int32_t RegistryStore::open(const std::string& place)
{
    if (place.empty())
        return RESULT_NOT_FOUND;
    if (place.front() != '/')
        return RESULT_INVALID_NAME;
    m_folder.reset(
        retryOnSignal([&] { return ::open(place.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); }));
    if (!m_folder.isOpen())
        return errno == ELOOP || errno == ENOTDIR ? RESULT_ACCESS_DENIED : VXResultFromNative(errno);
    struct stat status;
    if (::fstat(m_folder.get(), &status) != 0)
        return VXResultFromNative(errno);
    m_mode = status.st_mode & (S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH);
    return isOnlyOurs(status) ? RESULT_OK : RESULT_ACCESS_DENIED;
}

std::int32_t RegistryStore::openFolder(
    ENUM_VX_HKEY hive, const RegistryPath& path, std::size_t count, Descriptor& folder) const
{
    Walk walk(m_folder.get());
    const std::int32_t result = inOrder([&] { return goTo(walk, hive, path, count); }, [&] { return walk.enter(); });
    folder = walk.release();
    return result;
}

std::int32_t RegistryStore::read(
    ENUM_VX_HKEY hive, const RegistryPath& path, std::u16string& units, RegistryFile* file) const
{
    RegistryFile unwanted;
    RegistryFile& source = file != nullptr ? *file : unwanted;
    ::clock_gettime(CLOCK_REALTIME, &source.before);
    Walk walk(m_folder.get());
    const std::int32_t result
        = inOrder([&] { return goTo(walk, hive, path, path.steps().size()); }, [&] { return walk.go(RECORD_NAME); },
            [&] { return readFile(walk.folder(), walk.path(), WHOLE_FILE, units, source.status); });
    if (failed(result)) {
        units.clear();
        return result == RESULT_NOT_FOUND && path.steps().empty() ? RESULT_OK : result;
    }
    if (walk.folder() == m_folder.get())
        source.path = walk.path();
    return units.empty() ? RESULT_STORE_CORRUPT : RESULT_OK;
}

std::int32_t RegistryStore::readSubkeys(
    ENUM_VX_HKEY hive, const RegistryPath& path, std::vector<std::u16string>& names) const
{
    Descriptor folder;
    if (const std::int32_t result = openFolder(hive, path, path.steps().size(), folder); failed(result))
        return result == RESULT_NOT_FOUND && path.steps().empty() ? RESULT_OK : result;
    std::map<std::u16string, std::u16string> byFolded;
    const std::int32_t result = forEachEntry(folder.get(), [&](std::string_view entry) {
        if (!entry.starts_with(FOLDER_MARK))
            return RESULT_OK;
        std::u16string units;
        RegistryRecord record;
        struct stat status;
        const std::string file = std::string(entry) + '/' + RECORD_NAME;
        const std::int32_t read = readFile(folder.get(), file.c_str(), RegistryRecord::HEAD_UNITS, units, status);
        if (failed(read))
            return read == RESULT_NOT_FOUND ? RESULT_OK : read; // removed since
        if (!record.readName(units))
            return RESULT_STORE_CORRUPT;
        byFolded.emplace(foldRegistryName(record.name), record.name);
        return RESULT_OK;
    });
    for (auto& entry : byFolded)
        names.push_back(std::move(entry.second));
    return result;
}

std::int32_t RegistryChange::begin(bool isToBeMade)
{
    std::int32_t result = open();
    if (result == RESULT_NOT_FOUND && isToBeMade)
        result = inOrder([] { return makeFolders(place()); },
            [&] {
                RegistryWatch::noteNewStore();
                return open();
            });
    if (failed(result))
        return result;

    freeTurnInChild();
    m_turn = std::unique_lock(g_changes);
    m_lock.reset(retryOnSignal([&] {
        return ::openat(m_folder.get(), "lock", O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    }));
    if (!m_lock.isOpen())
        return resultOfErrno();
    struct flock whole { };
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return inOrder([&] { return resultOf(retryOnSignal([&] { return ::fcntl(m_lock.get(), F_SETLKW, &whole); })); },
        [&] { return removeTree(m_folder.get(), PENDING_NAME); },
        [&] { return m_mark.begin(m_folder.get(), fileMode()); });
}

std::int32_t RegistryChange::replace(ENUM_VX_HKEY hive, const RegistryPath& path, std::u16string_view units)
{
    Descriptor key;
    return inOrder([&] { return openFolder(hive, path, path.steps().size(), key); },
        [&] { return writeFile(m_folder.get(), PENDING_NAME, units); },
        [&] { return takePlace(key.get(), RECORD_NAME); });
}

std::int32_t RegistryChange::create(
    ENUM_VX_HKEY hive, const RegistryPath& path, const std::vector<RegistryValue>& values)
{
    if (const std::int32_t result = makeHive(hive); failed(result))
        return result;
    const std::vector<RegistryStep>& steps = path.steps();
    if (steps.empty())
        return values.empty() ? RESULT_OK : replace(hive, path, RegistryRecord {{}, values}.write());

    // The highest missing folder is prepared with all folders below it, and renamed as a whole.
    Descriptor above;
    std::size_t first = steps.size();
    std::int32_t found = RESULT_NOT_FOUND;
    while (found == RESULT_NOT_FOUND && first > 0)
        found = openFolder(hive, path, --first, above);
    if (failed(found))
        return found;

    std::vector<Descriptor> folders;
    for (std::size_t i = first; i < steps.size(); ++i) {
        const int parent = folders.empty() ? m_folder.get() : folders.back().get();
        const char* name = folders.empty() ? PENDING_NAME : steps[i].fileName.c_str();
        RegistryRecord record {steps[i].name, {}};
        if (i + 1 == steps.size())
            record.values = values;
        Descriptor& folder = folders.emplace_back();
        if (const std::int32_t result = inOrder([&] { return makeFolder(parent, name, folder); },
                [&] { return writeFile(folder.get(), RECORD_NAME, record.write()); });
            failed(result))
            return result;
    }
    for (const Descriptor& folder : folders) {
        if (const std::int32_t result = flush(folder.get()); failed(result))
            return result;
    }
    return takePlace(above.get(), steps[first].fileName.c_str());
}

std::int32_t RegistryChange::remove(ENUM_VX_HKEY hive, const RegistryPath& path)
{
    const std::vector<RegistryStep>& steps = path.steps();
    if (steps.empty())
        return RESULT_ACCESS_DENIED;
    Descriptor above;
    if (const std::int32_t result = openFolder(hive, path, steps.size() - 1, above); failed(result))
        return result;
    if (::renameat(above.get(), steps.back().fileName.c_str(), m_folder.get(), PENDING_NAME) != 0)
        return VXResultFromNative(errno);
    const std::int32_t result = flush(above.get());
    removeTree(m_folder.get(), PENDING_NAME); // the next change removes the rest
    return result;
}

std::int32_t RegistryChange::takePlace(int folder, const char* name) const noexcept
{
    return inOrder([&] { return resultOf(::renameat(m_folder.get(), PENDING_NAME, folder, name)); },
        [&] { return flush(folder); });
}

std::int32_t RegistryChange::makeHive(ENUM_VX_HKEY hive) const noexcept
{
    if (static_cast<std::size_t>(hive) >= std::size(HIVES))
        return RESULT_INVALID_ARGUMENT;
    Descriptor folder;
    const std::int32_t result = makeFolder(m_folder.get(), HIVES[hive], folder);
    if (result == RESULT_ALREADY_EXISTS)
        return RESULT_OK;
    return failed(result) ? result : flush(m_folder.get());
}

std::int32_t RegistryChange::makeFolder(int parent, const char* name, Descriptor& folder) const noexcept
{
    if (::mkdirat(parent, name, S_IRWXU) != 0)
        return VXResultFromNative(errno);
    folder.reset(openFolderAt(parent, name));
    if (!folder.isOpen())
        return resultOfErrno();
    return resultOf(::fchmod(folder.get(), m_mode));
}

std::int32_t RegistryChange::writeFile(int folder, const char* name, std::u16string_view units) const
{
    const Descriptor file(retryOnSignal([&] {
        return ::openat(folder, name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    }));
    if (!file.isOpen() || ::fchmod(file.get(), fileMode()) != 0)
        return VXResultFromNative(errno);
    const auto* source = reinterpret_cast<const char*>(units.data());
    for (std::size_t rest = units.size() * sizeof(char16_t); rest > 0;) {
        const ssize_t written = retryOnSignal([&] { return ::write(file.get(), source, rest); });
        if (written < 0)
            return VXResultFromNative(errno);
        source += written;
        rest -= static_cast<std::size_t>(written);
    }
    return flush(file.get());
}

} // namespace vxsys::detail
