#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/io/InputStream.h"
#include "vx/io/OutputStream.h"
#include "vxsys/Process.h"

#include <cstdint>
#include <span>

namespace vx::exec {

/// A child process. Its standard streams are pipes, and the parent uses their other ends as streams: it reads what the
/// child writes. A child that fills a pipe blocks until the parent reads, so read both outputs before `join`, in two
/// threads if both can be long. Not locked: one thread controls the object.
class VX_API Process : public Object {
public:
    /// Starts `program`. In `commandLine` (null: none) blanks separate the arguments; blanks between double quotes do
    /// not. `directory` is its working directory and `environment` a null-terminated array of NAME=VALUE texts; null
    /// stands for those of the caller. With bit 0 of `flags` a program without a separator in its name is looked up in
    /// the PATH. Throws ResultException if it cannot be started.
    Process(const char16_t* program, const char16_t* commandLine = nullptr, const char16_t* directory = nullptr,
        const char16_t* const* environment = nullptr, unsigned int flags = 0);
    /// The child also inherits the open descriptors `inherited`, sockets for example, under the same numbers. They stay
    /// open in the parent. Numbers below 3 are refused: these are the child's standard streams.
    Process(const char16_t* program, const char16_t* commandLine, const char16_t* directory,
        const char16_t* const* environment, unsigned int flags, std::span<const std::uint32_t> inherited);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    /// A child that is still running continues. Its input ends. Its output is read and discarded once no stream of this
    /// object uses it.
    ~Process() noexcept override;

    /// Waits for the child to end and returns its exit code, or 128 plus the signal's number if a signal ended it. -1
    /// if the system did not keep the exit code: this process ignores SIGCHLD, or another part of it collects all
    /// children. Throws IllegalStateException if the end has been seen already.
    int join();
    /// Whether the child has ended. Throws IllegalStateException if the end has been seen already.
    bool tryJoin();
    /// Whether the child ends within `milliseconds`; `VX_WAIT_FOREVER` has no limit. True again once that has been seen.
    bool joinFor(std::uint32_t milliseconds);
    /// The exit code as `join` returns it, without waiting. Throws IllegalStateException before the end has been seen.
    int getExitCode();

    /// The system's number of the child. It is only for texts and other programs: once the end has been seen, the
    /// system may give the number to another process.
    std::uint32_t getProcessID() const noexcept { return m_id; }
    /// Asks the child to end (SIGTERM); it may handle or ignore that. False if it has already ended.
    bool terminate() { return sendSignal(15); }
    /// Ends the child (SIGKILL), which cannot clean up. False if it has already ended.
    bool kill() { return sendSignal(9); }
    /// Sends a signal by its number in `csignal`. It never reaches another process, and not the children of the child.
    /// False if the child has already ended. Throws ResultException: RESULT_INVALID_ARGUMENT for a number that is no
    /// signal, RESULT_NOT_PERMITTED if the child runs as another user.
    bool sendSignal(int signal);

    /// Each returns the same stream every time, also after the child has ended. Closing it leaves the pipe open.
    Reference<io::InputStream> getInputStream();
    Reference<io::OutputStream> getOutputStream();
    Reference<io::InputStream> getErrorStream();
    /// Ends the child's standard input: the child reads what has been written, then the end. Later writes fail.
    void closeInput();

    /// The descriptor in an inheritance identifier: 412 in "vx.net.tcp.socket=412". The parent lists it as inherited,
    /// and the child opens it. Throws ResultException with RESULT_INVALID_ARGUMENT for a text of another form.
    static std::uint32_t getInheritedDescriptor(const String& inheritanceId);

    /// The identifier of the calling process.
    static unsigned int getCurrentID();
    /// Not available: both throw ResultException with RESULT_NOT_AVAILABLE.
    unsigned int getID();
    static Reference<Process> joinChild();

private:
    class Pipe;

    void checkJoinable() const;

    std::uint32_t m_handle = VX_PROCESS_INVALID_HANDLE;
    std::uint32_t m_id = 0;
    Reference<Pipe> m_childInput;
    Reference<Pipe> m_childOutput;
    Reference<Pipe> m_childError;
    std::int32_t m_exitCode = -1;
    Reference<io::InputStream> m_inputStream;
    Reference<io::OutputStream> m_outputStream;
    Reference<io::InputStream> m_errorStream;
};

} // namespace vx::exec
