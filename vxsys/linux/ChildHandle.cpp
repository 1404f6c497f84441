#include "vxsys/linux/ChildHandle.h"

#include "vxsys/Process.h"
#include "vxsys/Result.h"
#include "vxsys/detail/Deadline.h"
#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/linux/Reaper.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <ctime>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

/// The handle of a child that had ended and was collected by another part of the process before a handle could be
/// opened.
constexpr std::uint32_t COLLECTED_CHILD = VX_PROCESS_INVALID_HANDLE - 1;

/// Set in the handle of a child that is known by its number. The number stays that of the child until it is collected.
constexpr std::uint32_t NUMBER_BIT = 0x80000000;
constinit std::atomic<bool> g_hasNumbers = false; ///< the system has no process descriptors

bool isNumber(std::uint32_t child) noexcept
{
    return child > NUMBER_BIT && child < COLLECTED_CHILD && g_hasNumbers;
}

pid_t numberOf(std::uint32_t child) noexcept
{
    return static_cast<pid_t>(child & ~NUMBER_BIT);
}

bool isHandle(std::uint32_t child) noexcept
{
    return child <= INT_MAX || isNumber(child);
}

void closeHandle(std::uint32_t child) noexcept
{
    if (!isNumber(child))
        ::close(static_cast<int>(child));
}

/// As ::waitid, for the end of the child.
int waitForEnd(std::uint32_t child, siginfo_t& ended, int options) noexcept
{
    ended = {};
    return retryOnSignal([&] {
        return isNumber(child) ? ::waitid(P_PID, static_cast<id_t>(numberOf(child)), &ended, WEXITED | options)
                               : ::waitid(P_PIDFD, child, &ended, WEXITED | options);
    });
}

/// Without a descriptor, no call of the system waits for one child and has a limit. So a wait with a limit asks again
/// and again.
bool endsByNumber(std::uint32_t child, const Deadline& deadline) noexcept
{
    constexpr long MILLISECOND = 1'000'000;
    constexpr long LONGEST_PAUSE = 16 * MILLISECOND;
    siginfo_t ended;
    for (long pause = MILLISECOND;; pause = std::min(2 * pause, LONGEST_PAUSE)) {
        if (waitForEnd(child, ended, WNOWAIT | (deadline.isNever() ? 0 : WNOHANG)) != 0)
            return errno == ECHILD && ::kill(numberOf(child), 0) != 0 && errno == ESRCH;
        if (ended.si_pid != 0)
            return true;
        if (deadline.hasPassed())
            return false;
        timespec rest = deadline.left();
        if (rest.tv_sec > 0 || rest.tv_nsec > pause)
            rest = {0, pause};
        ::nanosleep(&rest, nullptr);
    }
}

/// Whether the child ends before the deadline.
bool ends(std::uint32_t child, const Deadline& deadline) noexcept
{
    if (isNumber(child))
        return endsByNumber(child, deadline);
    pollfd state {static_cast<int>(child), POLLIN, 0};
    const int found = retryOnSignal([&] {
        const timespec left = deadline.isNever() ? timespec {} : deadline.left();
        return ::ppoll(&state, 1, deadline.isNever() ? nullptr : &left, nullptr);
    });
    return found == 1 && (state.revents & POLLIN) != 0;
}

bool hasEnded(std::uint32_t child) noexcept
{
    return ends(child, Deadline::in(0));
}

std::int32_t waitFor(std::uint32_t process, int options, std::int32_t* exitCode) noexcept
{
    constexpr int ENDED_BY_SIGNAL = 128;

    if (exitCode == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *exitCode = -1;
    if (process == COLLECTED_CHILD)
        return RESULT_FALSE;
    if (!isHandle(process))
        return RESULT_INVALID_HANDLE;
    siginfo_t ended;
    if (waitForEnd(process, ended, options) != 0) {
        const int error = errno;
        if (error != ECHILD || !hasEnded(process))
            return VXResultFromNative(error);
        closeHandle(process);
        return RESULT_FALSE;
    }
    if (ended.si_pid == 0)
        return RESULT_TIMED_OUT;
    *exitCode = ended.si_code == CLD_EXITED ? ended.si_status : ENDED_BY_SIGNAL + ended.si_status;
    closeHandle(process);
    return RESULT_OK;
}

} // namespace

int vxsys::detail::openChildHandle(pid_t child, std::uint32_t& handle) noexcept
{
    if (!g_hasNumbers) {
        Descriptor process(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
        if (process.isOpen()) {
            const int error = process.get() <= STDERR_FILENO ? process.moveAboveStandardStreams() : 0;
            handle = error == 0 ? static_cast<std::uint32_t>(process.release()) : VX_PROCESS_INVALID_HANDLE;
            return error;
        }
        if (errno == ESRCH) {
            handle = COLLECTED_CHILD;
            return 0;
        }
        if (errno != ENOSYS && errno != EPERM) // EPERM: from a sandbox that does not know the call
            return errno;
        g_hasNumbers = true;
    }
    handle = NUMBER_BIT | static_cast<std::uint32_t>(child);
    return 0;
}

std::int32_t VXProcessJoin(std::uint32_t process, std::int32_t* exitCode) noexcept
{
    return waitFor(process, 0, exitCode);
}

std::int32_t VXProcessGetExitCode(std::uint32_t process, std::int32_t* exitCode) noexcept
{
    return waitFor(process, WNOHANG, exitCode);
}

std::int32_t VXProcessTimedJoin(std::uint32_t process, std::uint32_t milliseconds, std::int32_t* exitCode) noexcept
{
    if (exitCode != nullptr && isHandle(process))
        ends(process, Deadline::in(milliseconds));
    return waitFor(process, WNOHANG, exitCode);
}

std::int32_t VXProcessSendSignal(std::uint32_t process, std::int32_t signal) noexcept
{
    if (signal < 1 || signal > SIGRTMAX)
        return RESULT_INVALID_ARGUMENT;
    if (process == COLLECTED_CHILD)
        return RESULT_FALSE;
    if (!isHandle(process))
        return RESULT_INVALID_HANDLE;
    const auto resultOf = [](long done) {
        return done == 0 ? RESULT_OK : errno == ESRCH ? RESULT_FALSE : VXResultFromNative(errno);
    };
    if (isNumber(process)) {
        siginfo_t ended; // only a child that is not collected keeps its number
        if (waitForEnd(process, ended, WNOWAIT | WNOHANG) != 0 || ended.si_pid != 0)
            return RESULT_FALSE;
        return resultOf(::kill(numberOf(process), signal));
    }
    if (hasEnded(process)) // the system accepts signals to a child until it has been joined
        return RESULT_FALSE;
    return resultOf(::syscall(SYS_pidfd_send_signal, process, signal, nullptr, 0));
}

std::int32_t VXProcessDetach(std::uint32_t process) noexcept
{
    std::int32_t exitCode = 0;
    const std::int32_t result = waitFor(process, WNOHANG, &exitCode);
    if (result == RESULT_TIMED_OUT)
        return isNumber(process) ? reapLater(numberOf(process)) : reapLater(Descriptor(static_cast<int>(process)));
    return failed(result) ? result : RESULT_OK;
}

std::int32_t VXProcessDrain(std::uint32_t pipe) noexcept
{
    if (pipe > INT_MAX)
        return RESULT_INVALID_HANDLE;
    return drainLater(Descriptor(static_cast<int>(pipe)));
}
