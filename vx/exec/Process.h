#pragma once

#include "vx/Reference.h"
#include "vx/io/InputStream.h"
#include "vx/io/OutputStream.h"
#include "vxsys/Process.h"

#include <cstdint>

namespace vx::exec {

/// A child process with its standard streams as streams of this side: what the parent reads is the child's output. A child
/// that writes more than a pipe holds waits until somebody reads: read both of its outputs, each on a thread of its own if
/// need be, before `join`. Not locked: one thread controls the object.
class VX_API Process : public Object {
public:
    /// Starts `program`. In `commandLine` (null: none) blanks separate the arguments and double quotes hold one together.
    /// `directory` (null: the caller's) is where it works, `environment` (null: the caller's) its NAME=VALUE texts, which
    /// a null ends. With bit 0 of `flags` a program without a separator in its name is looked for in the PATH. Throws
    /// ResultException where it cannot be started.
    Process(const char16_t* program, const char16_t* commandLine = nullptr, const char16_t* directory = nullptr,
        const char16_t* const* environment = nullptr, unsigned int flags = 0);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    /// A child that still runs goes on alone.
    ~Process() noexcept override;

    /// Waits for the end and gives the exit code, 128 plus the signal's number for a child that a signal ended. Throws
    /// IllegalStateException when the end has been seen already.
    int join();
    /// Whether the child has ended. Throws IllegalStateException when the end has been seen already.
    bool tryJoin();
    /// Throws IllegalStateException before the end has been seen.
    int getExitCode();

    /// Each gives one and the same stream every time, also when the child has ended. Closing it leaves the pipe open.
    Reference<io::InputStream> getInputStream();
    Reference<io::OutputStream> getOutputStream();
    Reference<io::InputStream> getErrorStream();
    /// Ends the child's standard input: it reads what has been written, then the end. Writing behind it fails.
    void closeInput();

    /// Of the calling process.
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
