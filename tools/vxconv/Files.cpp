#include "Files.h"

#include "common/Failure.h"

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vxconv {

using namespace vxtools;

namespace {

constexpr mode_t RIGHTS = 07777;
constexpr mode_t RIGHTS_OF_NEW_FILES = 0666;
constexpr int ENDING_SIGNALS[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

/// The file beside the target, for the handler of signals; empty for none.
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

/// Keeps the ending signals out to the end of the block.
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
            std::signal(signal, SIG_IGN); // whoever started us wants us to go on, as `nohup` does
    }
}

/// Where a path leads behind its symbolic links, whether or not the file is there.
std::string followLinks(std::string path)
{
    constexpr int MOST_LINKS = 40; // as the kernel has it
    for (int links = 0; links < MOST_LINKS; ++links) {
        char target[PATH_MAX];
        const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
        if (length < 0)
            break;
        const std::string name(target, static_cast<std::size_t>(length));
        path = name[0] == '/' ? name : path.substr(0, path.rfind('/') + 1) + name;
    }
    return path;
}

mode_t rightsOfNewFile()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return RIGHTS_OF_NEW_FILES & ~mask;
}

bool isSameFile(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

} // namespace

Output::Output(const std::string& path, const Input& input)
    : m_name(path == "-" ? "standard output" : path)
{
    struct stat status;
    if (path == "-") {
        struct stat source;
        if (::fstat(m_descriptor, &status) == 0 && S_ISREG(status.st_mode) && ::fstat(input.descriptor(), &source) == 0
            && isSameFile(status, source))
            throw Failure(m_name, "is the input; use -o");
        return;
    }
    if (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
        m_descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
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
    const bool replaces = ::stat(path.c_str(), &status) == 0;
    if (replaces && ::access(path.c_str(), W_OK) != 0)
        throw Failure(m_name, textOfError(errno));

    const std::string beside = path.substr(0, path.rfind('/') + 1) + ".vxconv-XXXXXX";
    if (beside.size() >= sizeof g_beside)
        throw Failure(m_name, textOfError(ENAMETOOLONG));

    const SignalPause pause;
    catchEndingSignals();
    std::memcpy(g_beside, beside.c_str(), beside.size() + 1);
    m_descriptor = ::mkostemp(g_beside, O_CLOEXEC);
    if (m_descriptor < 0) {
        const int error = errno;
        g_beside[0] = '\0';
        throw Failure(m_name, textOfError(error));
    }
    m_target = path;
    if (replaces && ::fchown(m_descriptor, status.st_uid, status.st_gid) != 0)
        status.st_mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID); // another owner's rights are not ours to give
    if (::fchmod(m_descriptor, replaces ? status.st_mode & RIGHTS : rightsOfNewFile()) != 0) {
        const int error = errno;
        close();
        removeBeside();
        g_beside[0] = '\0';
        throw Failure(m_name, textOfError(error));
    }
}

void Output::commit()
{
    if (m_target.empty())
        return;
    const int descriptor = m_descriptor;
    m_descriptor = -1;
    if (::close(descriptor) != 0 || ::rename(g_beside, m_target.c_str()) != 0)
        throw Failure(m_name, textOfError(errno));
    const SignalPause pause;
    g_beside[0] = '\0';
    m_target.clear();
}

void Output::close()
{
    if (m_descriptor > 2)
        ::close(m_descriptor);
    m_descriptor = -1;
}

} // namespace vxconv
