#include "Output.h"

#include "Failure.h"
#include "FileName.h"
#include "Input.h"

#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>

namespace vxtools {

namespace {

constexpr mode_t RIGHTS = 07777;
constexpr mode_t RIGHTS_OF_NEW_FILES = 0666;
constexpr int ENDING_SIGNALS[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

/// The name of the temporary file, for the signal handler; empty if it has none.
char g_beside[PATH_MAX];

void removeBeside() noexcept
{
    if (g_beside[0] != '\0')
        ::unlink(g_beside);
}

void endBySignal(int signal)
{
    removeBeside();
    std::signal(signal, SIG_DFL);
    ::raise(signal);
}

/// Blocks the terminating signals to the end of the block.
class [[nodiscard]] SignalPause {
public:
    SignalPause()
    {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : ENDING_SIGNALS)
            sigaddset(&signals, signal);
        ::sigprocmask(SIG_BLOCK, &signals, &m_before);
    }
    ~SignalPause() { ::sigprocmask(SIG_SETMASK, &m_before, nullptr); }
    SignalPause(const SignalPause&) = delete;
    SignalPause& operator=(const SignalPause&) = delete;

private:
    sigset_t m_before;
};

void catchEndingSignals()
{
    for (const int signal : ENDING_SIGNALS) {
        if (std::signal(signal, endBySignal) == SIG_IGN)
            std::signal(signal, SIG_IGN); // as set by `nohup`
    }
}

/// A path that leads to the open file, even if the file has no name.
std::array<char, 32> nameOfDescriptor(int descriptor)
{
    std::array<char, 32> name;
    std::snprintf(name.data(), name.size(), "/proc/self/fd/%d", descriptor);
    return name;
}

/// Opens a file in `folder` that has no name and is removed when its descriptor is closed; -1 if the system cannot
/// create such a file or cannot name it later.
int openUnnamed(const std::string& folder)
{
    const int descriptor
        = openFile(folder.empty() ? "." : folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (descriptor < 0 || ::access(nameOfDescriptor(descriptor).data(), F_OK) == 0)
        return descriptor;
    ::close(descriptor);
    return -1;
}

/// Gives a file without a name the name `pattern`, with the last six characters replaced so that the name is unique.
/// Stores the name in `g_beside`. False with `errno` set if it fails.
bool nameBeside(int descriptor, const std::string& pattern)
{
    constexpr int MOST_TRIES = 100;
    constexpr std::size_t RANDOM_DIGITS = 6;
    const std::array<char, 32> source = nameOfDescriptor(descriptor);
    std::random_device random;
    std::memcpy(g_beside, pattern.c_str(), pattern.size() + 1);
    char* const digits = g_beside + pattern.size() - RANDOM_DIGITS;
    for (int tries = 0; tries < MOST_TRIES; ++tries) {
        std::snprintf(digits, RANDOM_DIGITS + 1, "%06x", random() & 0xFFFFFFU);
        if (::linkat(AT_FDCWD, source.data(), AT_FDCWD, g_beside, AT_SYMLINK_FOLLOW) == 0)
            return true;
        if (errno != EEXIST)
            break;
    }
    const int error = errno;
    g_beside[0] = '\0'; // a file of that name is not ours to remove
    errno = error;
    return false;
}

mode_t rightsOfNewFile()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return RIGHTS_OF_NEW_FILES & ~mask;
}

/// Gives `file` the owner, the group and the access list of the one at `path`. Returns the mode that it may have with
/// what it could get of that.
mode_t takeRights(int file, const std::string& path, const struct stat& old)
{
    constexpr const char* ACCESS_LIST = "system.posix_acl_access";
    constexpr auto SAME = static_cast<uid_t>(-1);
    mode_t rights = old.st_mode & RIGHTS;
    if (::fchown(file, old.st_uid, old.st_gid) != 0) {
        rights &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
        if (::fchown(file, SAME, old.st_gid) != 0)
            rights &= ~static_cast<mode_t>(S_IRWXG);
    }
    char list[8192];
    const ssize_t size = ::getxattr(path.c_str(), ACCESS_LIST, list, sizeof list);
    if (size < 0 && (errno == ENODATA || errno == ENOTSUP))
        ::fremovexattr(file, ACCESS_LIST); // from its folder
    else if (size < 0 || ::fsetxattr(file, ACCESS_LIST, list, static_cast<std::size_t>(size), 0) != 0)
        rights &= ~static_cast<mode_t>(S_IRWXG); // with a list, they are the rights of all whom it names
    return rights;
}

} // namespace

bool writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            return false;
    }
    return true;
}

Output::Output(Text name)
    : m_name(std::move(name))
{
}

Output::Output(const std::string& path)
    : Output(path == "-" ? STANDARD_OUTPUT() : Text(path)) // so that the destructor runs if what follows fails
{
    if (path == "-") {
        requireStream(m_descriptor);
        return;
    }
    struct stat status;
    if (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        m_descriptor = openFile(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
        if (m_descriptor < 0)
            throw Failure(m_name, textOfError(errno));
        return;
    }
    openBeside(followLinks(path));
}

Output::~Output()
{
    close();
    if (!m_target.empty()) {
        const SignalPause pause;
        removeBeside();
        g_beside[0] = '\0';
    }
}

void Output::openBeside(const std::string& path)
{
    struct stat status;
    m_replaces = ::stat(path.c_str(), &status) == 0;
    if (m_replaces && ::access(path.c_str(), W_OK) != 0)
        throw Failure(m_name, textOfError(errno));

    const std::string folder = path.substr(0, path.rfind('/') + 1);
    m_beside = folder + ".vx-XXXXXX";
    if (m_beside.size() >= sizeof g_beside)
        throw Failure(m_name, textOfError(ENAMETOOLONG));

    m_target = path;

    const SignalPause pause;
    catchEndingSignals();
    m_descriptor = openUnnamed(folder);
    m_isUnnamed = m_descriptor >= 0;
    if (!m_isUnnamed) {
        std::memcpy(g_beside, m_beside.c_str(), m_beside.size() + 1);
        m_descriptor = ::mkostemp(g_beside, O_CLOEXEC);
    }
    if (m_descriptor < 0) {
        const int error = errno;
        g_beside[0] = '\0';
        throw Failure(m_name, textOfError(error));
    }
    if (::fchmod(m_descriptor, m_replaces ? takeRights(m_descriptor, path, status) : rightsOfNewFile()) != 0)
        throw Failure(m_name, textOfError(errno));
}

void Output::write(std::string_view bytes)
{
    if (!writeAll(m_descriptor, bytes))
        throw Failure(m_name, textOfError(errno));
}

void Output::commit()
{
    if (m_target.empty())
        return;
    while (m_replaces && ::fsync(m_descriptor) != 0) {
        if (errno != EINTR)
            throw Failure(m_name, textOfError(errno));
    }
    // Closing any descriptor reports what the system could not write; the other descriptor can still name the file.
    if (::close(::dup(m_descriptor)) != 0 && errno != EINTR)
        throw Failure(m_name, textOfError(errno));
    const SignalPause pause;
    if (m_isUnnamed && !nameBeside(m_descriptor, m_beside))
        throw Failure(m_name, textOfError(errno));
    if (::rename(g_beside, m_target.c_str()) != 0)
        throw Failure(m_name, textOfError(errno));
    g_beside[0] = '\0';
    m_target.clear();
    close();
}

void Output::close()
{
    if (m_descriptor > 2)
        ::close(m_descriptor);
    m_descriptor = -1;
}

} // namespace vxtools
