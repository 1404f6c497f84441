#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Child processes. Negative results are failures; null out-parameters give RESULT_INVALID_ARGUMENT.
extern "C" {

inline constexpr std::uint32_t VX_PROCESS_INVALID_HANDLE = 0xFFFFFFFF;

/// Looks for a program without a separator in its name in the folders of PATH.
inline constexpr std::uint32_t VX_PROCESS_SEARCH_PATH = 0x1;

/// Starts `program` (a path in the grammar of vxsys/File.h) with three pipes. In `commandLine` (null: none) blanks separate
/// the arguments and double quotes hold one together; the program's name goes in front of them. The child works in
/// `directory` (null: that of the caller) with the NAME=VALUE texts of `environment`, which a null ends (null: the
/// caller's). It inherits no other descriptor, no blocked signal and no changed disposition of one.
/// `pipes` gets this side's ends of the child's standard input, output and error, files in the sense of vxsys/File.h that
/// the caller closes. A program that cannot be started is a failure here; then `*process` is `VX_PROCESS_INVALID_HANDLE`
/// and so are the pipes.
VXSYS_API std::int32_t VXProcessCreate(const char16_t* program, const char16_t* commandLine, const char16_t* directory,
    const char16_t* const* environment, std::uint32_t flags, std::uint32_t pipes[3], std::uint32_t* process) noexcept;
/// Waits for the end and gives the exit code, 128 plus the signal's number for a child that a signal ended. The handle is
/// gone then.
VXSYS_API std::int32_t VXProcessJoin(std::uint32_t process, std::int32_t* exitCode) noexcept;
/// As above without waiting: RESULT_TIMED_OUT, and the handle stays, for a child that still runs.
VXSYS_API std::int32_t VXProcessGetExitCode(std::uint32_t process, std::int32_t* exitCode) noexcept;
/// Lets the child go on alone; the handle is gone. The system keeps no record of its end.
VXSYS_API std::int32_t VXProcessDetach(std::uint32_t process) noexcept;

/// The identifier of the calling process.
VXSYS_API std::uint32_t VXProcessGetID() noexcept;
}
