#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/io/InputStream.h"
#include "vx/io/OutputStream.h"
#include "vxsys/Process.h"

#include <cstdint>
#include <span>

namespace vx::exec {

/// A child process. Its standard streams are pipes, and this side's ends of them are streams: what the parent reads is the
/// child's output. A child that writes more than a pipe holds waits until its parent reads: read both outputs before
/// `join`, in two threads if both can be long. Not locked: one thread controls the object.
class VX_API Process : public Object {
public:
    /// Starts `program`. In `commandLine` (null: none) blanks separate the arguments and double quotes hold one together.
    /// `directory` (null: the caller's) is where it works, `environment` (null: the caller's) its NAME=VALUE texts, in an
    /// array that ends with null. With bit 0 of `flags` a program without a separator in its name is looked for in the
    /// PATH. Throws ResultException if it cannot be started.
    Process(const char16_t* program, const char16_t* commandLine = nullptr, const char16_t* directory = nullptr,
        const char16_t* const* environment = nullptr, unsigned int flags = 0);
    /// The child also gets the open descriptors `inherited`, sockets say, under the numbers that they have here. They stay
    /// open here. Numbers below 3 are refused: these are the child's standard streams.
    Process(const char16_t* program, const char16_t* commandLine, const char16_t* directory,
        const char16_t* const* environment, unsigned int flags, std::span<const std::uint32_t> inherited);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    /// A child that still runs goes on alone. Its input ends; its output is read and dropped once no stream of this object
    /// uses it any more.
    ~Process() noexcept override;

    /// Waits for the end and gives the exit code, or 128 plus the signal's number for a child that a signal ended. -1 if the
    /// system did not keep it: this process ignores SIGCHLD, or another part of it collects all children. Throws
    /// IllegalStateException if the end has been seen already.
    int join();
    /// Whether the child has ended. Throws IllegalStateException if the end has been seen already.
    bool tryJoin();
    /// As `join` without waiting. Throws IllegalStateException before the end has been seen.
    int getExitCode();

    /// Each gives the same stream every time, also after the child has ended. Closing it leaves the pipe open.
    Reference<io::InputStream> getInputStream();
    Reference<io::OutputStream> getOutputStream();
    Reference<io::InputStream> getErrorStream();
    /// Ends the child's standard input: the child reads what has been written, then the end. Later writes fail.
    void closeInput();

    /// The descriptor that an inheritance identifier names, 412 in "vx.net.tcp.socket=412": what a parent lists as
    /// inherited, and what the child opens. Throws ResultException with RESULT_INVALID_ARGUMENT for a text of another form.
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
    Reference<Pipe> m_childInput;
    Reference<Pipe> m_childOutput;
    Reference<Pipe> m_childError;
    std::int32_t m_exitCode = -1;
    Reference<io::InputStream> m_inputStream;
    Reference<io::OutputStream> m_outputStream;
    Reference<io::InputStream> m_errorStream;
};

} // namespace vx::exec
