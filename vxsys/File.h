#pragma once

#include "vxsys/Api.h"

#include <cstdint>
#include <cstdio>

/// Files by 32-bit handles (descriptors) and paths in the grammar with backslashes and drives; "/" separates as well,
/// drive C: is the root of the file system, and there is no other drive and no share: RESULT_PATH_NOT_FOUND. A path is
/// UTF-8 for the operating system; one with a lone surrogate gives RESULT_INVALID_NAME. Results are negative for failure,
/// null pointers and negative lengths give RESULT_INVALID_ARGUMENT, and a handle that is none RESULT_INVALID_HANDLE.
extern "C" {

inline constexpr std::uint32_t VX_FILE_INVALID_HANDLE = 0xFFFFFFFF;

inline constexpr std::uint32_t VX_FILE_READ = 0x80000000;
inline constexpr std::uint32_t VX_FILE_WRITE = 0x40000000;
/// Made when missing.
inline constexpr std::uint32_t VX_FILE_CREATE = 0x100;
/// Cut to nothing at the opening.
inline constexpr std::uint32_t VX_FILE_TRUNCATE = 0x200;
/// Positioned at the end at the opening.
inline constexpr std::uint32_t VX_FILE_AT_END = 0x8;
/// Each write goes to the end of the file. The system finds the end and writes in one step, so that what several writers,
/// of any program and any user, write in one call each stays whole.
inline constexpr std::uint32_t VX_FILE_APPEND = 0x10;

/// Which file it is. A new file may get the number of a removed one, but not its time of birth.
struct VXFileIdentity {
    std::uint64_t volume;
    std::uint64_t number;
    /// Nanoseconds since 1970; 0 where the file system does not keep it.
    std::int64_t born;

    friend bool operator==(const VXFileIdentity&, const VXFileIdentity&) noexcept = default;
};

/// How a file stood at one look. Any difference says that its content may be another one.
struct VXFileStatus {
    VXFileIdentity identity;
    std::int64_t size;
    /// Nanoseconds since 1970 of the last change of the content, in the steps of the system's clock.
    std::int64_t modified;

    bool operator==(const VXFileStatus&) const noexcept = default;
};

/// Opens close-on-exec. `flags` must ask to read or to write, and truncate only to write. `access` is the mode of a file
/// that is made, less the process's mask. `*handle` is `VX_FILE_INVALID_HANDLE` after a failure. A directory is never
/// opened: RESULT_IS_DIRECTORY.
VXSYS_API std::int32_t VXFileOpen(
    const char16_t* path, std::uint32_t flags, std::int32_t access, std::uint32_t* handle) noexcept;
/// Opens the file of `handle` once more, whatever its name is now, with its own position; `flags` as above, without
/// `VX_FILE_CREATE`. The user must have the right to open it that way.
VXSYS_API std::int32_t VXFileReopen(std::uint32_t handle, std::uint32_t flags, std::uint32_t* other) noexcept;
/// The handle is gone after a failure too, unless it was none: then the system could not keep what had been written.
VXSYS_API std::int32_t VXFileClose(std::uint32_t handle) noexcept;
/// Bytes in the file.
VXSYS_API std::int32_t VXFileGetSize(std::uint32_t handle, std::int64_t* size) noexcept;

/// One system read of up to `length` bytes; `*done` is 0 at the end of the file and after a failure.
VXSYS_API std::int32_t VXFileRead(std::uint32_t handle, void* target, std::int32_t length, std::int32_t* done) noexcept;
/// Reads from byte `position` on, and leaves the handle's position alone. Else as above.
VXSYS_API std::int32_t VXFileReadAt(
    std::uint32_t handle, std::int64_t position, void* target, std::int32_t length, std::int32_t* done) noexcept;
/// One system write; `*done` may be less than `length`. A closed pipe or connection is a result, never a signal.
VXSYS_API std::int32_t VXFileWrite(
    std::uint32_t handle, const void* source, std::int32_t length, std::int32_t* done) noexcept;
/// RESULT_OK for a regular file, RESULT_FALSE for a device, a pipe or a connection.
VXSYS_API std::int32_t VXFileIsRegular(std::uint32_t handle) noexcept;
/// `VXFileWrite` to a regular file. A regular file has no other end that can close, so this saves a system call.
VXSYS_API std::int32_t VXFileWriteRegular(
    std::uint32_t handle, const void* source, std::int32_t length, std::int32_t* done) noexcept;
/// Moves to the end and stores the position. -1 for a pipe or a terminal, which have no
/// position and are always at their end.
VXSYS_API std::int32_t VXFileSeekToEnd(std::uint32_t handle, std::int64_t* position) noexcept;
/// Where the next byte is read or written; -1 for what has no position.
VXSYS_API std::int32_t VXFileGetPosition(std::uint32_t handle, std::int64_t* position) noexcept;
/// Cuts the file back to `size` bytes, or fills it up with zero bytes. The position stays.
VXSYS_API std::int32_t VXFileTruncate(std::uint32_t handle, std::int64_t size) noexcept;
/// Flushes to disk. What cannot be flushed, a pipe or a terminal, counts as flushed.
VXSYS_API std::int32_t VXFileFlush(std::uint32_t handle) noexcept;
/// Identifies the file, whatever its names: two handles on one file give the same identity.
VXSYS_API std::int32_t VXFileGetIdentity(std::uint32_t handle, VXFileIdentity* identity) noexcept;
/// As above and more, by name. Symbolic links are followed.
VXSYS_API std::int32_t VXFileGetStatus(const char16_t* path, VXFileStatus* status) noexcept;
/// Makes `length` bytes the content of the file in one step: a process that opens the file finds the old content or the new
/// one, whole, also after a kill or with a full disk, and a failure leaves the old one. The file keeps its owner, permissions
/// and symbolic link; one that is made gets `access` as with VXFileOpen. Denied where the file or its folder may not be
/// written. `*status`, unless null, is that of the new file.
VXSYS_API std::int32_t VXFileReplace(
    const char16_t* path, const void* content, std::int64_t length, std::int32_t access, VXFileStatus* status) noexcept;

/// The new content of a file, written in steps before it takes the file's place. It has no name until then where the file
/// system can do so: a kill leaves nothing of it. On other file systems it has a temporary name in the same folder.
using VXFileReplacement = struct VXFileReplacementTag*;

/// Begins what VXFileReplace does at once. The caller writes the content to `*handle`, which belongs to the replacement and
/// is not to be closed. After a failure `*replacement` is null.
VXSYS_API std::int32_t VXFileReplaceBegin(
    const char16_t* path, std::int32_t access, VXFileReplacement* replacement, std::uint32_t* handle) noexcept;
/// Flushes the content to disk and makes it that of the file. After a failure the file has its old content. Once for each
/// replacement. `*status`, unless null, is that of the new file.
VXSYS_API std::int32_t VXFileReplaceCommit(VXFileReplacement replacement, VXFileStatus* status) noexcept;
/// Ends a replacement: the handle is closed, and what was not committed is gone. A child process by `fork` ends only its copy.
VXSYS_API std::int32_t VXFileReplaceEnd(VXFileReplacement replacement) noexcept;
/// Removes the name of a replacement that was not committed, and nothing else. For a handler of signals that ends the program.
VXSYS_API void VXFileReplaceDiscard(VXFileReplacement replacement) noexcept;

/// The handle under a stream of the C library, which keeps it; `VX_FILE_INVALID_HANDLE` where there is none.
VXSYS_API std::uint32_t VXFileFromStream(std::FILE* stream) noexcept;

/// The full, normalised form of `path` ("C:\..."), zero-terminated in `target` of `size` units, which must not overlap
/// it: one separator between names, no "." or "..", an upper-case drive, a separator at the end only if it has one there.
/// A text that does not fit gives RESULT_BUFFER_TOO_SMALL, and `target` is empty after each failure. Nothing needs to
/// exist.
VXSYS_API std::int32_t VXPathExpand(const char16_t* path, char16_t* target, std::int32_t size) noexcept;
/// The current directory ("C:\home\me") and the directory for temporary files ("C:\tmp\", with its separator), in the
/// same form, under the same rule of size. The latter is the one that TMPDIR names, if files can be made there. A
/// directory whose name has no form here, being no UTF-8 or having a backslash in it, gives RESULT_INVALID_NAME.
VXSYS_API std::int32_t VXPathGetCurrent(char16_t* target, std::int32_t size) noexcept;
VXSYS_API std::int32_t VXPathGetTemp(char16_t* target, std::int32_t size) noexcept;
}
