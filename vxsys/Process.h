#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Child processes. Negative results are failures; null out-parameters give RESULT_INVALID_ARGUMENT.
///
/// Linux knows a child by a descriptor (pidfd) from version 5.4 on. Where there is none, as in some sandboxes and
/// debuggers, children are known by their numbers: then a timed wait may end some milliseconds late, and no other part of
/// the process may collect them, since a signal could reach a new process with the same number.
extern "C" {

inline constexpr std::uint32_t VX_PROCESS_INVALID_HANDLE = 0xFFFFFFFF;

/// The program is searched for in the folders of PATH if its name has no separator.
inline constexpr std::uint32_t VX_PROCESS_SEARCH_PATH = 0x1;

/// Starts `program`, a path as in vxsys/File.h, with three pipes. In `commandLine` (null: none) blanks separate the
/// arguments; blanks between double quotes do not. The first argument is always the name of the program. `directory` is
/// the working directory of the child (null: that of the caller). `environment` is an array of NAME=VALUE texts that
/// ends with null (null: that of the caller). The child inherits no other descriptors. None of its signals are blocked,
/// and all have their default action.
///
/// `pipes` becomes the caller's ends of the child's standard input, output and error: handles of vxsys/File.h, which
/// the caller closes. If the program cannot be started, `*process` is `VX_PROCESS_INVALID_HANDLE` and the pipes are
/// `VX_FILE_INVALID_HANDLE`.
VXSYS_API std::int32_t VXProcessCreate(const char16_t* program, const char16_t* commandLine, const char16_t* directory,
    const char16_t* const* environment, std::uint32_t flags, std::uint32_t pipes[3], std::uint32_t* process) noexcept;
/// The same, and the child also inherits `inheritedCount` descriptors of the caller under the same numbers. They stay
/// open in the caller. RESULT_INVALID_ARGUMENT for a number below 3, RESULT_INVALID_HANDLE for one that is not open.
VXSYS_API std::int32_t VXProcessCreateInheriting(const char16_t* program, const char16_t* commandLine,
    const char16_t* directory, const char16_t* const* environment, std::uint32_t flags, const std::uint32_t* inherited,
    std::int32_t inheritedCount, std::uint32_t pipes[3], std::uint32_t* process) noexcept;
/// The same, and `*id` (null: not wanted) becomes the system's number of the child, 0 if it cannot be started. The
/// system may give the number to another process after the child has been joined.
VXSYS_API std::int32_t VXProcessCreateWithID(const char16_t* program, const char16_t* commandLine,
    const char16_t* directory, const char16_t* const* environment, std::uint32_t flags, const std::uint32_t* inherited,
    std::int32_t inheritedCount, std::uint32_t pipes[3], std::uint32_t* process, std::uint32_t* id) noexcept;

/// Waits for the child to end, stores its exit code, or 128 plus the signal's number if a signal ended it, and closes
/// the handle. RESULT_FALSE and the code -1 if the system did not keep the exit code: the process ignores SIGCHLD, or
/// another part of it collects all children.
VXSYS_API std::int32_t VXProcessJoin(std::uint32_t process, std::int32_t* exitCode) noexcept;
/// The same without waiting. RESULT_TIMED_OUT for a child that still runs; the handle then stays open.
VXSYS_API std::int32_t VXProcessGetExitCode(std::uint32_t process, std::int32_t* exitCode) noexcept;
/// The same with a wait of at most `milliseconds`; `VX_WAIT_FOREVER` has no limit.
VXSYS_API std::int32_t VXProcessTimedJoin(
    std::uint32_t process, std::uint32_t milliseconds, std::int32_t* exitCode) noexcept;
/// Sends a signal, by its number of the system, to the child and never to another process. RESULT_FALSE if the child
/// has ended. RESULT_INVALID_ARGUMENT for a number that is no signal.
VXSYS_API std::int32_t VXProcessSendSignal(std::uint32_t process, std::int32_t signal) noexcept;
/// Closes the handle and lets the child run. It is collected in the background when it ends.
VXSYS_API std::int32_t VXProcessDetach(std::uint32_t process) noexcept;
/// Closes the caller's end of a child's output when no one else reads it. Without a reader, SIGPIPE would end a child
/// that writes. So what it still writes is read and dropped in the background, until all writers have closed their end.
/// This function owns `pipe` from the call on, even if it fails.
VXSYS_API std::int32_t VXProcessDrain(std::uint32_t pipe) noexcept;

/// The identifier of the calling process.
VXSYS_API std::uint32_t VXProcessGetID() noexcept;
}
