#include "vxsys/Process.h"

#include "vxsys/File.h"
#include "vxsys/Result.h"
#include "vxsys/detail/Path.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/Utf.h"
#include "vxsys/posix/Reaper.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <limits>
#include <new>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
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

class Descriptor {
public:
    Descriptor() noexcept = default;
    ~Descriptor()
    {
        if (m_value != -1)
            ::close(m_value);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const noexcept { return m_value; }
    int release() noexcept { return std::exchange(m_value, -1); }

    /// Takes `value` over, moved above the standard streams, where the child's own will stand.
    void set(int value)
    {
        m_value = value;
        if (value >= STANDARD_STREAMS)
            return;
        const int moved = ::fcntl(value, F_DUPFD_CLOEXEC, STANDARD_STREAMS);
        const int error = errno;
        ::close(value);
        m_value = moved;
        check(moved == -1 ? error : 0);
    }

private:
    int m_value = -1;
};

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;

    void open()
    {
        int ends[2];
        check(::pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno);
        try {
            readEnd.set(ends[0]);
        } catch (...) {
            ::close(ends[1]);
            throw;
        }
        writeEnd.set(ends[1]);
    }
};

class FileActions {
public:
    FileActions() { check(::posix_spawn_file_actions_init(&m_value)); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_value); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    posix_spawn_file_actions_t* get() noexcept { return &m_value; }

private:
    posix_spawn_file_actions_t m_value;
};

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

pid_t spawn(const char16_t* program, const char16_t* commandLine, const char16_t* directory,
    const char16_t* const* environment, std::uint32_t flags, std::uint32_t (&pipes)[STANDARD_STREAMS])
{
    const bool searches = (flags & VX_PROCESS_SEARCH_PATH) != 0;
    const std::string path = findProgram(program, searches);
    std::vector<std::string> arguments = splitArguments(commandLine != nullptr ? commandLine : u"");
    arguments.insert(arguments.begin(), path);
    std::vector<std::string> variables;
    if (environment != nullptr)
        variables = readEnvironment(environment);
    std::vector<char*> variablePointers = pointersTo(variables);

    Pipe input;
    Pipe output;
    Pipe error;
    for (Pipe* pipe : {&input, &output, &error})
        pipe->open();

    FileActions actions;
    check(::posix_spawn_file_actions_adddup2(actions.get(), input.readEnd.get(), STDIN_FILENO));
    check(::posix_spawn_file_actions_adddup2(actions.get(), output.writeEnd.get(), STDOUT_FILENO));
    check(::posix_spawn_file_actions_adddup2(actions.get(), error.writeEnd.get(), STDERR_FILENO));
    check(::posix_spawn_file_actions_addclosefrom_np(actions.get(), STANDARD_STREAMS));
    if (directory != nullptr)
        check(::posix_spawn_file_actions_addchdir_np(actions.get(), nativePath(directory).c_str()));

    const PlainSignals signals;
    pid_t child = -1;
    check((searches ? ::posix_spawnp : ::posix_spawn)(&child, path.c_str(), actions.get(), signals.get(),
        pointersTo(arguments).data(), environment != nullptr ? variablePointers.data() : environ));

    pipes[0] = static_cast<std::uint32_t>(input.writeEnd.release());
    pipes[1] = static_cast<std::uint32_t>(output.readEnd.release());
    pipes[2] = static_cast<std::uint32_t>(error.readEnd.release());
    return child;
}

/// Only a child of our own: 0 and negative numbers mean groups to the system.
bool isProcess(std::uint32_t process) noexcept
{
    return process != 0 && process <= static_cast<std::uint32_t>(std::numeric_limits<pid_t>::max());
}

std::int32_t waitFor(std::uint32_t process, int options, std::int32_t* exitCode) noexcept
{
    constexpr int ENDED_BY_SIGNAL = 128;

    if (exitCode == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *exitCode = -1;
    if (!isProcess(process))
        return RESULT_INVALID_HANDLE;
    int status = 0;
    const pid_t ended = retryOnSignal([&] { return ::waitpid(static_cast<pid_t>(process), &status, options); });
    if (ended == -1)
        return VXResultFromNative(errno);
    if (ended == 0)
        return RESULT_TIMED_OUT;
    *exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : ENDED_BY_SIGNAL + WTERMSIG(status);
    return RESULT_OK;
}

} // namespace

std::int32_t VXProcessCreate(const char16_t* program, const char16_t* commandLine, const char16_t* directory,
    const char16_t* const* environment, std::uint32_t flags, std::uint32_t pipes[3], std::uint32_t* process) noexcept
{
    if (pipes == nullptr || process == nullptr)
        return RESULT_INVALID_ARGUMENT;
    std::fill_n(pipes, STANDARD_STREAMS, VX_FILE_INVALID_HANDLE);
    *process = VX_PROCESS_INVALID_HANDLE;
    if (program == nullptr || *program == 0 || (flags & ~VX_PROCESS_SEARCH_PATH) != 0)
        return RESULT_INVALID_ARGUMENT;
    try {
        std::uint32_t ends[STANDARD_STREAMS];
        *process = static_cast<std::uint32_t>(spawn(program, commandLine, directory, environment, flags, ends));
        std::copy_n(ends, STANDARD_STREAMS, pipes);
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
    return result == RESULT_TIMED_OUT ? reapLater(static_cast<pid_t>(process)) : result;
}

std::uint32_t VXProcessGetID() noexcept
{
    return static_cast<std::uint32_t>(::getpid());
}
