#include "vxsys/Process.h"

#include "vxsys/File.h"
#include "vxsys/Result.h"
#include "vxsys/detail/Descriptor.h"
#include "vxsys/detail/ForkHandlers.h"
#include "vxsys/detail/Path.h"
#include "vxsys/detail/Retry.h"
#include "vxsys/detail/Steps.h"
#include "vxsys/detail/Utf.h"
#include "vxsys/linux/ChildHandle.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <exception>
#include <fcntl.h>
#include <span>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

constexpr int STANDARD_STREAMS = 3;

std::int32_t narrow(std::u16string_view text, std::string& bytes)
{
    constexpr std::size_t BYTES_PER_UNIT = 3;
    bytes.resize(text.size() * BYTES_PER_UNIT);
    const Conversion done = utf16ToUtf8(text, bytes.data(), bytes.size());
    bytes.resize(done.written);
    return done.outcome == Outcome::done ? RESULT_OK : RESULT_INVALID_ARGUMENT;
}

std::int32_t narrowAll(const std::vector<std::u16string>& texts, std::vector<std::string>& narrowed)
{
    for (const std::u16string& text : texts) {
        if (const std::int32_t result = narrow(text, narrowed.emplace_back()); failed(result))
            return result;
    }
    return RESULT_OK;
}

std::int32_t nativePath(const char16_t* path, std::string& bytes)
{
    NativePath native;
    const std::int32_t result = native.assign(path);
    bytes = native.get();
    return result;
}

/// The path of the program, made absolute: the child changes its directory before it uses the path.
std::int32_t findProgram(const char16_t* program, bool searches, std::string& path)
{
    if (searches && std::u16string_view(program).find_first_of(u"\\/:") == std::u16string_view::npos)
        return narrow(program, path);
    if (const std::int32_t result = nativePath(program, path); failed(result))
        return result;
    if (path.front() == '/')
        return RESULT_OK;
    std::array<char, NATIVE_PATH_SIZE> current;
    if (::getcwd(current.data(), current.size()) == nullptr)
        return VXResultFromNative(errno);
    path = std::string(current.data()) + '/' + path;
    return RESULT_OK;
}

/// Blanks separate arguments, but not between double quotes. Two quotes with nothing between them are an empty
/// argument.
std::vector<std::u16string> splitArguments(std::u16string_view line)
{
    std::vector<std::u16string> arguments;
    bool isQuoted = false;
    bool isInside = false; // of the last argument
    for (const char16_t unit : line) {
        if (!isQuoted && (unit == u' ' || unit == u'\t')) {
            isInside = false;
            continue;
        }
        if (!std::exchange(isInside, true))
            arguments.emplace_back();
        if (unit == u'"')
            isQuoted = !isQuoted;
        else
            arguments.back() += unit;
    }
    return arguments;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;

    /// Returns a native error or 0. Both descriptors are above those of the standard streams, which the child will
    /// replace.
    int open() noexcept
    {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return errno;
        readEnd.reset(ends[0]);
        writeEnd.reset(ends[1]);
        for (Descriptor* end : {&readEnd, &writeEnd}) {
            if (const int error = end->get() < STANDARD_STREAMS ? end->moveAboveStandardStreams() : 0)
                return error;
        }
        return 0;
    }
};

/// The changes to descriptors that the child makes before its program starts.
class FileActions {
public:
    FileActions() noexcept
        : m_error(::posix_spawn_file_actions_init(&m_value))
        , m_isMade(m_error == 0)
    {
    }
    ~FileActions()
    {
        if (m_isMade)
            ::posix_spawn_file_actions_destroy(&m_value);
    }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    const posix_spawn_file_actions_t* get() const noexcept { return &m_value; }
    /// The error of the first call that failed, or 0. Later calls have no effect.
    int error() const noexcept { return m_error; }

    void duplicate(int from, int to) noexcept { add(::posix_spawn_file_actions_adddup2, from, to); }
    void close(int descriptor) noexcept { add(::posix_spawn_file_actions_addclose, descriptor); }
    void changeDirectory(const char* path) noexcept { add(::posix_spawn_file_actions_addchdir_np, path); }
    /// Closes all descriptors except the standard streams and those in `kept`, a sorted list of numbers above them.
    void closeAllBut(const std::vector<int>& kept) noexcept;

private:
    template <class Call, class... Arguments>
    void add(Call call, Arguments... arguments) noexcept
    {
        if (m_error == 0)
            m_error = call(&m_value, arguments...);
    }

    posix_spawn_file_actions_t m_value;
    int m_error;
    const bool m_isMade;
};

void FileActions::closeAllBut(const std::vector<int>& kept) noexcept
{
    // Moves the kept descriptors to the numbers after the standard streams, closes all above, and moves them back. As
    // the list is sorted, no descriptor is moved to a number that is still in use.
    const auto count = static_cast<int>(kept.size());
    for (int i = 0; i < count; ++i)
        duplicate(
            kept[static_cast<std::size_t>(i)], STANDARD_STREAMS + i); // even without a move: it clears close-on-exec
    add(::posix_spawn_file_actions_addclosefrom_np, STANDARD_STREAMS + count);
    for (int i = count - 1; i >= 0; --i) {
        const int number = kept[static_cast<std::size_t>(i)];
        if (number == STANDARD_STREAMS + i)
            break; // then all before it are in their places too
        duplicate(STANDARD_STREAMS + i, number);
        close(STANDARD_STREAMS + i);
    }
}

/// The child starts with no signal blocked and the default action for each, whatever the caller has set for itself.
class PlainSignals {
public:
    PlainSignals() noexcept
        : m_error(::posix_spawnattr_init(&m_value))
    {
        if (m_error != 0)
            return;
        sigset_t none;
        sigset_t all;
        sigemptyset(&none);
        sigfillset(&all);
        ::posix_spawnattr_setsigmask(&m_value, &none);
        ::posix_spawnattr_setsigdefault(&m_value, &all);
        ::posix_spawnattr_setflags(&m_value, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~PlainSignals()
    {
        if (m_error == 0)
            ::posix_spawnattr_destroy(&m_value);
    }
    PlainSignals(const PlainSignals&) = delete;
    PlainSignals& operator=(const PlainSignals&) = delete;

    const posix_spawnattr_t* get() const noexcept { return &m_value; }
    int error() const noexcept { return m_error; }

private:
    posix_spawnattr_t m_value;
    const int m_error;
};

std::vector<std::u16string> readEnvironment(const char16_t* const* environment)
{
    std::vector<std::u16string> texts;
    for (; environment != nullptr && *environment != nullptr; ++environment)
        texts.emplace_back(*environment);
    return texts;
}

/// Sorts `inherited` and removes duplicates. The descriptors are checked before pipes are opened, because a pipe could
/// get the number of one that is closed.
std::int32_t checkInherited(std::span<const std::uint32_t> inherited, std::vector<int>& numbers)
{
    for (const std::uint32_t descriptor : inherited) {
        if (descriptor < STANDARD_STREAMS)
            return RESULT_INVALID_ARGUMENT;
        numbers.push_back(static_cast<int>(descriptor));
        if (::fcntl(numbers.back(), F_GETFD) == -1)
            return VXResultFromNative(errno);
    }
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return RESULT_OK;
}

/// The arguments of `VXProcessCreate`.
struct Order {
    const char16_t* program;
    const char16_t* commandLine;
    const char16_t* directory;
    const char16_t* const* environment;
    std::uint32_t flags;
    std::span<const std::uint32_t> inherited;
};

/// The same in the form of the operating system.
struct NativeOrder {
    bool searches;
    std::string path;
    std::vector<std::string> arguments;
    std::vector<std::string> variables;
    std::vector<int> inherited;
    std::string directory; ///< empty: that of the caller

    std::int32_t assign(const Order& order)
    {
        searches = (order.flags & VX_PROCESS_SEARCH_PATH) != 0;
        return inOrder([&] { return findProgram(order.program, searches, path); },
            [&] {
                arguments.push_back(path);
                return narrowAll(splitArguments(order.commandLine != nullptr ? order.commandLine : u""), arguments);
            },
            [&] { return narrowAll(readEnvironment(order.environment), variables); },
            [&] { return checkInherited(order.inherited, inherited); },
            [&] { return order.directory != nullptr ? nativePath(order.directory, directory) : RESULT_OK; });
    }
};

/// Returns a native error or 0.
int spawn(NativeOrder& order, char* const* environment, const Pipe (&pipes)[STANDARD_STREAMS], pid_t& child)
{
    FileActions actions;
    actions.duplicate(pipes[STDIN_FILENO].readEnd.get(), STDIN_FILENO);
    actions.duplicate(pipes[STDOUT_FILENO].writeEnd.get(), STDOUT_FILENO);
    actions.duplicate(pipes[STDERR_FILENO].writeEnd.get(), STDERR_FILENO);
    actions.closeAllBut(order.inherited);
    if (!order.directory.empty())
        actions.changeDirectory(order.directory.c_str());
    const PlainSignals signals;
    const std::vector<char*> arguments = pointersTo(order.arguments);
    return inOrder([&] { return actions.error(); }, [&] { return signals.error(); },
        [&] {
            return (order.searches ? ::posix_spawnp : ::posix_spawn)(
                &child, order.path.c_str(), actions.get(), signals.get(), arguments.data(), environment);
        });
}

/// Returns a native error or 0. A child for which no handle can be opened is killed, since no caller could wait for it.
int openHandle(pid_t child, std::uint32_t& handle) noexcept
{
    const int error = openChildHandle(child, handle);
    if (error != 0) {
        ::kill(child, SIGKILL);
        retryOnSignal([&] { return ::waitpid(child, nullptr, 0); });
    }
    return error;
}

std::int32_t start(const Order& order, Pipe (&pipes)[STANDARD_STREAMS], std::uint32_t& handle, pid_t& child)
{
    NativeOrder native;
    if (const std::int32_t result = native.assign(order); failed(result))
        return result;
    std::vector<char*> variables = pointersTo(native.variables);
    char* const* const environment = order.environment != nullptr ? variables.data() : environ;
    return VXResultFromNative(inOrder([&] { return pipes[STDIN_FILENO].open(); },
        [&] { return pipes[STDOUT_FILENO].open(); }, [&] { return pipes[STDERR_FILENO].open(); },
        [&] { return spawn(native, environment, pipes, child); }, [&] { return openHandle(child, handle); }));
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
    return VXProcessCreateWithID(
        program, commandLine, directory, environment, flags, inherited, inheritedCount, pipes, process, nullptr);
}

std::int32_t VXProcessCreateWithID(const char16_t* program, const char16_t* commandLine, const char16_t* directory,
    const char16_t* const* environment, std::uint32_t flags, const std::uint32_t* inherited,
    std::int32_t inheritedCount, std::uint32_t pipes[3], std::uint32_t* process, std::uint32_t* id) noexcept
{
    if (id != nullptr)
        *id = 0;
    if (pipes == nullptr || process == nullptr)
        return RESULT_INVALID_ARGUMENT;
    std::fill_n(pipes, STANDARD_STREAMS, VX_FILE_INVALID_HANDLE);
    *process = VX_PROCESS_INVALID_HANDLE;
    if (program == nullptr || *program == 0 || (flags & ~VX_PROCESS_SEARCH_PATH) != 0 || inheritedCount < 0
        || (inherited == nullptr && inheritedCount > 0))
        return RESULT_INVALID_ARGUMENT;
    try {
        Pipe ends[STANDARD_STREAMS];
        pid_t child = -1;
        const std::int32_t result = start({program, commandLine, directory, environment, flags,
                                              {inherited, static_cast<std::size_t>(inheritedCount)}},
            ends, *process, child);
        if (failed(result))
            return result;
        if (id != nullptr)
            *id = static_cast<std::uint32_t>(child);
        pipes[STDIN_FILENO] = static_cast<std::uint32_t>(ends[STDIN_FILENO].writeEnd.release());
        pipes[STDOUT_FILENO] = static_cast<std::uint32_t>(ends[STDOUT_FILENO].readEnd.release());
        pipes[STDERR_FILENO] = static_cast<std::uint32_t>(ends[STDERR_FILENO].readEnd.release());
        return RESULT_OK;
    } catch (const std::exception&) {
        return RESULT_OUT_OF_MEMORY;
    }
}

std::uint32_t VXProcessGetID() noexcept
{
    static constinit std::atomic<std::uint32_t> s_id = 0; // every operation of a lock asks for it
    std::uint32_t id = s_id.load(std::memory_order_relaxed);
    if (id == 0) {
        static constinit std::atomic<bool> s_handlesForks = false;
        handleForks(s_handlesForks, nullptr, nullptr, [] { s_id.store(0, std::memory_order_relaxed); });
        id = static_cast<std::uint32_t>(::getpid());
        s_id.store(id, std::memory_order_relaxed);
    }
    return id;
}
