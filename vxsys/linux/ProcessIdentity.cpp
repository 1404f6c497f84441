#include "vxsys/linux/ProcessIdentity.h"

#include "vxsys/detail/Retry.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vxsys::detail {

namespace {

/// Fields of /proc/PID/stat (proc(5)).
struct ProcessStatus {
    ProcessIdentity identity;
    bool isEnded = false;
};

bool readStatus(const char* path, ProcessStatus& status) noexcept
{
    // The fields, by the numbers of proc(5).
    enum Field { STATE = 3, THREADS = 20, STARTED = 22, STACK = 28, LAST = STACK };

    const int file = retryOnSignal([&] { return ::open(path, O_RDONLY | O_CLOEXEC); });
    if (file == -1)
        return false;
    char text[1024]; // one read is enough for this short line
    const ssize_t length = retryOnSignal([&] { return ::read(file, text, sizeof text - 1); });
    ::close(file);
    if (length <= 0)
        return false;
    text[length] = '\0';

    // The second field is a name in brackets, which may contain any characters.
    const char* position = std::strrchr(text, ')');
    if (position == nullptr)
        return false;
    std::uint64_t numbers[LAST + 1] = {};
    char state = '\0';
    const char* const end = text + length;
    ++position;
    for (int field = STATE; field <= LAST; ++field) {
        while (position < end && *position == ' ')
            ++position;
        if (position == end)
            return false;
        if (field == STATE)
            state = *position;
        else
            std::from_chars(position, end, numbers[field]); // negative fields are not used here
        while (position < end && *position != ' ')
            ++position;
    }
    std::from_chars(text, end, status.identity.id);
    status.identity.started = numbers[STARTED];
    status.identity.stack = numbers[STACK];
    // The first thread of a running process is a zombie too if it has ended before the others.
    status.isEnded = (state == 'Z' || state == 'X') && numbers[THREADS] <= 1;
    return true;
}

} // namespace

ProcessIdentity ProcessIdentity::ofCaller() noexcept
{
    ProcessIdentity self {static_cast<std::uint32_t>(::getpid())};
    ProcessStatus status;
    // If /proc belongs to another namespace of process numbers, our number is that of another process there.
    if (readStatus("/proc/self/stat", status) && status.identity.id == self.id)
        self = status.identity;
    return self;
}

bool ProcessIdentity::isAlive(const ProcessIdentity& observer) const noexcept
{
    if (*this == observer)
        return true;
    if (::kill(static_cast<pid_t>(id), 0) == -1 && errno == ESRCH)
        return false;
    if (started == 0 || observer.started == 0)
        return true;

    char path[32];
    std::snprintf(path, sizeof path, "/proc/%u/stat", id);
    ProcessStatus status;
    if (!readStatus(path, status))
        return true; // it has just ended, which the next check will find, or it is hidden from the caller
    const bool isOtherProgram = stack != 0 && status.identity.stack != 0 && stack != status.identity.stack;
    return !status.isEnded && status.identity.started == started && !isOtherProgram;
}

std::uint64_t processNamespace() noexcept
{
    struct stat status;
    return ::stat("/proc/self/ns/pid", &status) == 0 ? status.st_ino : 0;
}

} // namespace vxsys::detail
