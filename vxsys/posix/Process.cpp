#include "vxsys/Process.h"

#include "vxsys/File.h"
#include "vxsys/Result.h"
#include "vxsys/detail/Path.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/Utf.h"
#include "vxsys/posix/Descriptor.h"
#include "vxsys/posix/Reaper.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <limits>
#include <new>
#include <poll.h>
#include <pthread.h>
#include <span>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

constexpr int STANDARD_STREAMS = 3;

/// What a step of `VXProcessCreate` throws: the result of the whole.
struct Failure {
    std::int32_t result;
};

void check(int error)
{
    if (error != 0)
        throw Failure {VXResultFromNative(error)};
}

std::string narrow(std::u16string_view text)
{
    constexpr std::size_t BYTES_PER_UNIT = 3;
    std::string bytes(text.size() * BYTES_PER_UNIT, '\0');
    const Conversion done = utf16ToUtf8(text, bytes.data(), bytes.size());
    if (done.outcome != Outcome::done)
        throw Failure {RESULT_INVALID_ARGUMENT};
    bytes.resize(done.written);
    return bytes;
}

std::string nativePath(const char16_t* path)
{
    NativePath native;
    const std::int32_t result = native.assign(path);
    if (failed(result))
        throw Failure {result};
    return native.get();
}

/// The program as seen from the child's directory: a relative path counts from the caller's.
std::string findProgram(const char16_t* program, bool searches)
{
    if (searches && std::u16string_view(program).find_first_of(u"\\/:") == std::u16string_view::npos)
        return narrow(program);
    std::string path = nativePath(program);
    if (path.front() != '/') {
        std::array<char, NATIVE_PATH_SIZE> current;
        if (::getcwd(current.data(), current.size()) == nullptr)
            throw Failure {VXResultFromNative(errno)};
        path = std::string(current.data()) + '/' + path;
    }
    return path;
}

/// Blanks separate, double quotes hold together; two quotes with nothing between are an empty argument.
std::vector<std::string> splitArguments(std::u16string_view line)
{
    std::vector<std::string> arguments;
    std::u16string argument;
    bool isQuoted = false;
    bool isOpen = false; // an argument has begun
    const auto end = [&] {
        if (isOpen)
            arguments.push_back(narrow(argument));
        argument.clear();
        isOpen = false;
    };
    for (const char16_t unit : line) {
        if (unit == u'"') {
            isQuoted = !isQuoted;
            isOpen = true;
        } else if (!isQuoted && (unit == u' ' || unit == u'\t')) {
            end();
        } else {
            argument += unit;
            isOpen = true;
        }
    }
    end();
    return arguments;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Moves a new descriptor above the standard streams, where the child's own will stand. -1 stays an error in `errno`.
Descriptor aboveStandardStreams(int descriptor)
{
    check(descriptor == -1 ? errno : 0);
    Descriptor owned(descriptor);
    if (descriptor >= STANDARD_STREAMS)
        return owned;
    Descriptor moved(::fcntl(descriptor, F_DUPFD_CLOEXEC, STANDARD_STREAMS));
    check(moved.isOpen() ? 0 : errno);
    return moved;
}

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;

    void open()
    {
        int ends[2];
        check(::pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno);
        writeEnd.reset(ends[1]); // owned before the next line may throw
        readEnd = aboveStandardStreams(ends[0]);
        writeEnd = aboveStandardStreams(writeEnd.release());
    }
};

class FileActions {
public:
    FileActions() { check(::posix_spawn_file_actions_init(&m_value)); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_value); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    posix_spawn_file_actions_t* get() noexcept { return &m_value; }

    void duplicate(int from, int to) { check(::posix_spawn_file_actions_adddup2(&m_value, from, to)); }
    void close(int descriptor) { check(::posix_spawn_file_actions_addclose(&m_value, descriptor)); }
    /// Closes all but the standard streams and `kept`, which are sorted and above them, and which the program gets.
    void closeAllBut(const std::vector<int>& kept);

private:
    posix_spawn_file_actions_t m_value;
};

void FileActions::closeAllBut(const std::vector<int>& kept)
{
    // All that are kept move together right above the standard streams, everything after them is closed, and they move
    // back. A sorted list of different numbers never moves one onto another that has still to move.
    const auto count = static_cast<int>(kept.size());
    for (int i = 0; i < count; ++i)
        duplicate(kept[static_cast<std::size_t>(i)], STANDARD_STREAMS + i); // onto itself: it stays open in the program
    check(::posix_spawn_file_actions_addclosefrom_np(&m_value, STANDARD_STREAMS + count));
    for (int i = count - 1; i >= 0; --i) {
        const int number = kept[static_cast<std::size_t>(i)];
        if (number == STANDARD_STREAMS + i)
            break; // and so are all before it
        duplicate(STANDARD_STREAMS + i, number);
        close(STANDARD_STREAMS + i);
    }
}

/// No signal blocked and each at its default, whatever the calling thread and its process have set for themselves.
class PlainSignals {
public:
    PlainSignals()
    {
        check(::posix_spawnattr_init(&m_value));
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        ::posix_spawnattr_setsigmask(&m_value, &none);
        ::posix_spawnattr_setsigdefault(&m_value, &all);
        ::posix_spawnattr_setflags(&m_value, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~PlainSignals() { ::posix_spawnattr_destroy(&m_value); }
    PlainSignals(const PlainSignals&) = delete;
    PlainSignals& operator=(const PlainSignals&) = delete;

    const posix_spawnattr_t* get() const noexcept { return &m_value; }

private:
    posix_spawnattr_t m_value;
};

std::vector<std::string> readEnvironment(const char16_t* const* environment)
{
    std::vector<std::string> texts;
    for (; *environment != nullptr; ++environment)
        texts.push_back(narrow(*environment));
    return texts;
}

/// The numbers in `inherited` in their order and each once. They must be open before any pipe is, which could get the
/// number of one that is not.
std::vector<int> checkInherited(std::span<const std::uint32_t> inherited)
{
    std::vector<int> numbers;
    for (const std::uint32_t descriptor : inherited) {
        if (descriptor < STANDARD_STREAMS)
            throw Failure {RESULT_INVALID_ARGUMENT};
        numbers.push_back(static_cast<int>(descriptor));
        check(::fcntl(numbers.back(), F_GETFD) != -1 ? 0 : errno);
    }
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

/// What a caller of `VXProcessCreate` says.
struct Order {
    const char16_t* program;
    const char16_t* commandLine;
    const char16_t* directory;
    const char16_t* const* environment;
    std::uint32_t flags;
    std::span<const std::uint32_t> inherited;
};

pid_t spawn(const Order& order, Pipe (&pipes)[STANDARD_STREAMS])
{
    const bool searches = (order.flags & VX_PROCESS_SEARCH_PATH) != 0;
    const std::string path = findProgram(order.program, searches);
    std::vector<std::string> arguments = splitArguments(order.commandLine != nullptr ? order.commandLine : u"");
    arguments.insert(arguments.begin(), path);
    std::vector<std::string> variables;
    if (order.environment != nullptr)
        variables = readEnvironment(order.environment);
    std::vector<char*> variablePointers = pointersTo(variables);
    const std::vector<int> inherited = checkInherited(order.inherited);

    for (Pipe& pipe : pipes)
        pipe.open();

    FileActions actions;
    actions.duplicate(pipes[STDIN_FILENO].readEnd.get(), STDIN_FILENO);
    actions.duplicate(pipes[STDOUT_FILENO].writeEnd.get(), STDOUT_FILENO);
    actions.duplicate(pipes[STDERR_FILENO].writeEnd.get(), STDERR_FILENO);
    actions.closeAllBut(inherited);
    if (order.directory != nullptr)
        check(::posix_spawn_file_actions_addchdir_np(actions.get(), nativePath(order.directory).c_str()));

    const PlainSignals signals;
    pid_t child = -1;
    check((searches ? ::posix_spawnp : ::posix_spawn)(&child, path.c_str(), actions.get(), signals.get(),
        pointersTo(arguments).data(), order.environment != nullptr ? variablePointers.data() : environ));

    pipes[STDIN_FILENO].readEnd.reset(-1);
    pipes[STDOUT_FILENO].writeEnd.reset(-1);
    pipes[STDERR_FILENO].writeEnd.reset(-1);
    return child;
}

/// Stands for a child that had ended, and that another part of the process had collected, before it got a handle.
constexpr std::uint32_t COLLECTED_CHILD = VX_PROCESS_INVALID_HANDLE - 1;

/// The handle of a child is a descriptor of the process (pidfd). Unlike its number it never leads to another process, and
/// it tells the child's end also if another part of the process collects all children.
std::uint32_t openHandle(pid_t child)
{
    const int descriptor = static_cast<int>(::syscall(SYS_pidfd_open, child, 0));
    if (descriptor == -1 && errno == ESRCH)
        return COLLECTED_CHILD;
    try {
        return static_cast<std::uint32_t>(aboveStandardStreams(descriptor).release());
    } catch (const Failure&) {
        ::kill(child, SIGKILL); // nobody could wait for it
        retryOnSignal([&] { return ::waitpid(child, nullptr, 0); });
        throw;
    }
}

bool hasEnded(int child) noexcept
{
    pollfd state {child, POLLIN, 0};
    return ::poll(&state, 1, 0) == 1 && (state.revents & POLLIN) != 0;
}

std::int32_t waitFor(std::uint32_t process, int options, std::int32_t* exitCode) noexcept
{
    constexpr int ENDED_BY_SIGNAL = 128;

    if (exitCode == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *exitCode = -1;
    if (process == COLLECTED_CHILD)
        return RESULT_FALSE;
    if (process > static_cast<std::uint32_t>(std::numeric_limits<int>::max()))
        return RESULT_INVALID_HANDLE;
    siginfo_t ended {};
    if (retryOnSignal([&] { return ::waitid(P_PIDFD, process, &ended, WEXITED | options); }) != 0) {
        const int error = errno;
        if (error != ECHILD || !hasEnded(static_cast<int>(process)))
            return VXResultFromNative(error);
        ::close(static_cast<int>(process));
        return RESULT_FALSE;
    }
    if (ended.si_pid == 0)
        return RESULT_TIMED_OUT;
    *exitCode = ended.si_code == CLD_EXITED ? ended.si_status : ENDED_BY_SIGNAL + ended.si_status;
    ::close(static_cast<int>(process));
    return RESULT_OK;
}

} // namespace

std::int32_t VXProcessCreate(const char16_t* program, const char16_t* commandLine, const char16_t* directory,
    const char16_t* const* environment, std::uint32_t flags, std::uint32_t pipes[3], std::uint32_t* process) noexcept
{
    return VXProcessCreateInheriting(program, commandLine, directory, environment, flags, nullptr, 0, pipes, process);
}

std::int32_t VXProcessCreateInheriting(const char16_t* program, const char16_t* commandLine, const char16_t* directory,
    const char16_t* const* environment, std::uint32_t flags, const std::uint32_t* inherited,
    std::int32_t inheritedCount, std::uint32_t pipes[3], std::uint32_t* process) noexcept
{
    if (pipes == nullptr || process == nullptr)
        return RESULT_INVALID_ARGUMENT;
    std::fill_n(pipes, STANDARD_STREAMS, VX_FILE_INVALID_HANDLE);
    *process = VX_PROCESS_INVALID_HANDLE;
    if (program == nullptr || *program == 0 || (flags & ~VX_PROCESS_SEARCH_PATH) != 0 || inheritedCount < 0
        || (inherited == nullptr && inheritedCount > 0))
        return RESULT_INVALID_ARGUMENT;
    try {
        Pipe ends[STANDARD_STREAMS];
        *process = openHandle(spawn({program, commandLine, directory, environment, flags,
                                        {inherited, static_cast<std::size_t>(inheritedCount)}},
            ends));
        pipes[STDIN_FILENO] = static_cast<std::uint32_t>(ends[STDIN_FILENO].writeEnd.release());
        pipes[STDOUT_FILENO] = static_cast<std::uint32_t>(ends[STDOUT_FILENO].readEnd.release());
        pipes[STDERR_FILENO] = static_cast<std::uint32_t>(ends[STDERR_FILENO].readEnd.release());
        return RESULT_OK;
    } catch (const Failure& failure) {
        return failure.result;
    } catch (const std::exception&) {
        return RESULT_OUT_OF_MEMORY;
    }
}

std::int32_t VXProcessJoin(std::uint32_t process, std::int32_t* exitCode) noexcept
{
    return waitFor(process, 0, exitCode);
}

std::int32_t VXProcessGetExitCode(std::uint32_t process, std::int32_t* exitCode) noexcept
{
    return waitFor(process, WNOHANG, exitCode);
}

std::int32_t VXProcessDetach(std::uint32_t process) noexcept
{
    std::int32_t exitCode = 0;
    const std::int32_t result = waitFor(process, WNOHANG, &exitCode);
    if (result == RESULT_TIMED_OUT)
        return reapLater(Descriptor(static_cast<int>(process)));
    return failed(result) ? result : RESULT_OK;
}

std::int32_t VXProcessDrain(std::uint32_t pipe) noexcept
{
    if (pipe > static_cast<std::uint32_t>(std::numeric_limits<int>::max()))
        return RESULT_INVALID_HANDLE;
    return drainLater(Descriptor(static_cast<int>(pipe)));
}

std::uint32_t VXProcessGetID() noexcept
{
    static constinit std::atomic<std::uint32_t> s_id = 0; // a lock asks each time that it is taken
    std::uint32_t id = s_id.load(std::memory_order_relaxed);
    if (id == 0) {
        static const int registered
            = ::pthread_atfork(nullptr, nullptr, [] { s_id.store(0, std::memory_order_relaxed); });
        static_cast<void>(registered);
        id = static_cast<std::uint32_t>(::getpid());
        s_id.store(id, std::memory_order_relaxed);
    }
    return id;
}
