#pragma once

#include "vxsys/Api.h"

#include <cstdint>

/// Child processes. Negative results are failures; null out-parameters give RESULT_INVALID_ARGUMENT.
extern "C" {

inline constexpr std::uint32_t VX_PROCESS_INVALID_HANDLE = 0xFFFFFFFF;

/// Looks for a program without a separator in its name in the folders of PATH.
inline constexpr std::uint32_t VX_PROCESS_SEARCH_PATH = 0x1;

/// Starts `program` (a path in the grammar of vxsys/File.h) with three pipes. In `commandLine` (null: none) blanks separate
/// the arguments and double quotes hold one together; the program's name is put before them. The child works in `directory`
/// (null: that of the caller) with the NAME=VALUE texts of `environment`, an array that ends with null (null: the
/// environment of the caller). It inherits no other descriptor, no blocked signal and no changed disposition of a signal.
/// `pipes` gets this side's ends of the child's standard input, output and error. They are files in the sense of
/// vxsys/File.h; the caller closes them. A program that cannot be started is a failure here; then `*process` is
/// `VX_PROCESS_INVALID_HANDLE` and the pipes are `VX_FILE_INVALID_HANDLE`.
VXSYS_API std::int32_t VXProcessCreate(const char16_t* program, const char16_t* commandLine, const char16_t* directory,
    const char16_t* const* environment, std::uint32_t flags, std::uint32_t pipes[3], std::uint32_t* process) noexcept;
/// The same with `inheritedCount` descriptors of the caller that the child gets as well, under the numbers that they have
/// here. They stay open here. A number below 3 gives RESULT_INVALID_ARGUMENT, one that is not open RESULT_INVALID_HANDLE.
VXSYS_API std::int32_t VXProcessCreateInheriting(const char16_t* program, const char16_t* commandLine,
    const char16_t* directory, const char16_t* const* environment, std::uint32_t flags, const std::uint32_t* inherited,
    std::int32_t inheritedCount, std::uint32_t pipes[3], std::uint32_t* process) noexcept;

/// Waits for the child's end and gives its exit code, or 128 plus the signal's number if a signal ended it. The handle is
/// closed then. RESULT_FALSE and the code -1 for a child that has ended but whose exit code the system did not keep: the
/// process ignores SIGCHLD, or another part of it collects all children.
VXSYS_API std::int32_t VXProcessJoin(std::uint32_t process, std::int32_t* exitCode) noexcept;
/// The same without waiting: RESULT_TIMED_OUT for a child that still runs, and the handle stays.
VXSYS_API std::int32_t VXProcessGetExitCode(std::uint32_t process, std::int32_t* exitCode) noexcept;
/// Leaves the child alone and closes the handle. The child's end is collected in the background.
VXSYS_API std::int32_t VXProcessDetach(std::uint32_t process) noexcept;
/// Takes over this side's end of a child's output that is not read any more. What is still written there is read and
/// dropped in the background until all writers have closed their end: a child that writes into a pipe without a
/// reader would be ended by SIGPIPE. `pipe` is closed in every case.
VXSYS_API std::int32_t VXProcessDrain(std::uint32_t pipe) noexcept;

/// The identifier of the calling process.
VXSYS_API std::uint32_t VXProcessGetID() noexcept;
}
