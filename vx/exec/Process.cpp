#include "vx/exec/Process.h"

#include "vx/Exceptions.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vx/detail/Hidden.h"
#include "vx/io/FileInputStream.h"
#include "vx/io/FileOutputStream.h"
#include "vxsys/File.h"

#include <utility>

namespace vx::exec {

namespace {

/// Tells the user what to check when a program does not start.
String nameOf(const char16_t* program, const char16_t* commandLine, const char16_t* directory)
{
    String name(program != nullptr ? program : commandLine != nullptr ? commandLine : u"");
    return directory != nullptr ? name + u" in " + directory : name;
}

} // namespace

/// The parent's end of a pipe. It stays open as long as the process object or a stream uses it.
class VX_HIDDEN Process::Pipe : public Object {
public:
    enum class Direction { FROM_CHILD, TO_CHILD };

    explicit Pipe(Direction direction) noexcept
        : m_direction(direction)
    {
    }
    ~Pipe() noexcept override { close(); }

    void open(std::uint32_t handle) noexcept { m_handle = handle; }
    void close() noexcept
    {
        if (m_handle == VX_FILE_INVALID_HANDLE)
            return;
        const std::uint32_t handle = std::exchange(m_handle, VX_FILE_INVALID_HANDLE);
        if (m_direction == Direction::TO_CHILD)
            VXFileClose(handle);
        else
            VXProcessDrain(handle); // otherwise SIGPIPE would end a child that still writes
    }
    std::uint32_t getHandle() const noexcept { return m_handle; }
    bool isOpen() const noexcept { return m_handle != VX_FILE_INVALID_HANDLE; }

    class Source;
    class Target;

private:
    const Direction m_direction;
    std::uint32_t m_handle = VX_FILE_INVALID_HANDLE;
};

class Process::Pipe::Source final : public io::FileInputStream {
public:
    explicit Source(Pipe* pipe)
        : FileInputStream(pipe->getHandle(), false)
        , m_pipe(pipe)
    {
    }

private:
    Reference<Pipe> m_pipe;
};

class Process::Pipe::Target final : public io::FileOutputStream {
public:
    explicit Target(Pipe* pipe)
        : FileOutputStream(pipe->getHandle(), false)
        , m_pipe(pipe)
    {
    }

    using FileOutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override
    {
        if (!m_pipe->isOpen()) // the descriptor may belong to another file by now
            throwResult(RESULT_INVALID_HANDLE);
        FileOutputStream::write(bytes, length);
    }

private:
    Reference<Pipe> m_pipe;
};

Process::Process(const char16_t* program, const char16_t* commandLine, const char16_t* directory,
    const char16_t* const* environment, unsigned int flags)
    : Process(program, commandLine, directory, environment, flags, {})
{
}

Process::Process(const char16_t* program, const char16_t* commandLine, const char16_t* directory,
    const char16_t* const* environment, unsigned int flags, std::span<const std::uint32_t> inherited)
    // Created before the child starts, so that nothing can fail after the start.
    : m_childInput(new Pipe(Pipe::Direction::TO_CHILD))
    , m_childOutput(new Pipe(Pipe::Direction::FROM_CHILD))
    , m_childError(new Pipe(Pipe::Direction::FROM_CHILD))
{
    if (inherited.size() > INT32_MAX)
        throwResult(RESULT_INVALID_ARGUMENT);
    std::uint32_t pipes[3];
    throwIfFailed(VXProcessCreateWithID(program, commandLine, directory, environment, flags, inherited.data(),
                      static_cast<std::int32_t>(inherited.size()), pipes, &m_handle, &m_id),
        u"start", [=] { return nameOf(program, commandLine, directory); });
    m_childInput->open(pipes[0]);
    m_childOutput->open(pipes[1]);
    m_childError->open(pipes[2]);
}

Process::~Process() noexcept
{
    if (m_handle != VX_PROCESS_INVALID_HANDLE)
        VXProcessDetach(m_handle);
}

int Process::join()
{
    checkJoinable();
    const std::int32_t result = VXProcessJoin(m_handle, &m_exitCode);
    if (failed(result))
        throw ResultException(result, u"process join failed");
    m_handle = VX_PROCESS_INVALID_HANDLE;
    return m_exitCode;
}

bool Process::tryJoin()
{
    checkJoinable();
    if (!failed(VXProcessGetExitCode(m_handle, &m_exitCode)))
        m_handle = VX_PROCESS_INVALID_HANDLE;
    return m_handle == VX_PROCESS_INVALID_HANDLE;
}

bool Process::joinFor(std::uint32_t milliseconds)
{
    if (m_handle == VX_PROCESS_INVALID_HANDLE)
        return true;
    const std::int32_t result = VXProcessTimedJoin(m_handle, milliseconds, &m_exitCode);
    if (result == RESULT_TIMED_OUT)
        return false;
    throwIfFailed(result);
    m_handle = VX_PROCESS_INVALID_HANDLE;
    return true;
}

bool Process::sendSignal(int signal)
{
    if (m_handle == VX_PROCESS_INVALID_HANDLE)
        return false;
    const std::int32_t result = VXProcessSendSignal(m_handle, signal);
    throwIfFailed(
        result, u"send signal", [&] { return String::valueOf(signal) + u" to process " + String::valueOf(m_id); });
    return result == RESULT_OK;
}

int Process::getExitCode()
{
    if (m_handle != VX_PROCESS_INVALID_HANDLE)
        throw IllegalStateException(u"process has not been joined");
    return m_exitCode;
}

Reference<io::InputStream> Process::getInputStream()
{
    if (m_inputStream == nullptr)
        m_inputStream = new Pipe::Source(m_childOutput.get());
    return m_inputStream;
}

Reference<io::OutputStream> Process::getOutputStream()
{
    if (m_outputStream == nullptr)
        m_outputStream = new Pipe::Target(m_childInput.get());
    return m_outputStream;
}

Reference<io::InputStream> Process::getErrorStream()
{
    if (m_errorStream == nullptr)
        m_errorStream = new Pipe::Source(m_childError.get());
    return m_errorStream;
}

void Process::closeInput()
{
    m_childInput->close();
}

std::uint32_t Process::getInheritedDescriptor(const String& inheritanceId)
{
    const std::u16string_view text = inheritanceId.view();
    const std::size_t separator = text.rfind(u'=');
    const std::u16string_view digits = separator != text.npos ? text.substr(separator + 1) : u"";
    std::uint64_t number = 0;
    for (const char16_t digit : digits) {
        number = number * 10 + (digit - u'0');
        if (digit < u'0' || digit > u'9' || number > INT32_MAX)
            throwResult(RESULT_INVALID_ARGUMENT);
    }
    if (digits.empty())
        throwResult(RESULT_INVALID_ARGUMENT);
    return static_cast<std::uint32_t>(number);
}

unsigned int Process::getCurrentID()
{
    return VXProcessGetID();
}

unsigned int Process::getID()
{
    throwResult(RESULT_NOT_AVAILABLE);
}

Reference<Process> Process::joinChild()
{
    throwResult(RESULT_NOT_AVAILABLE);
}

void Process::checkJoinable() const
{
    if (m_handle == VX_PROCESS_INVALID_HANDLE)
        throw IllegalStateException(u"process already joined");
}

} // namespace vx::exec
