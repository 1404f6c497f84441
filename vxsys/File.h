#pragma once

#include "vxsys/Api.h"

#include <cstdint>
#include <cstdio>

/// Files by paths and by 32-bit handles (descriptors). In a path both slashes separate names, and drive C: is the root
/// of the file system. Other drives and shares give RESULT_PATH_NOT_FOUND. Paths are passed to the operating system in
/// UTF-8; one with a lone surrogate gives RESULT_INVALID_NAME. Negative results are failures. Null pointers and
/// negative lengths give RESULT_INVALID_ARGUMENT, an invalid handle RESULT_INVALID_HANDLE.
extern "C" {

inline constexpr std::uint32_t VX_FILE_INVALID_HANDLE = 0xFFFFFFFF;

inline constexpr std::uint32_t VX_FILE_READ = 0x80000000;
inline constexpr std::uint32_t VX_FILE_WRITE = 0x40000000;
/// Creates the file if it is missing.
inline constexpr std::uint32_t VX_FILE_CREATE = 0x100;
/// Truncates the file when it is opened.
inline constexpr std::uint32_t VX_FILE_TRUNCATE = 0x200;
/// Opens the file at its end.
inline constexpr std::uint32_t VX_FILE_AT_END = 0x8;
/// Each write appends to the file: the system finds the end and writes in one step. So what a writer writes in one call
/// stays in one piece, even if other programs and users append to the same file.
inline constexpr std::uint32_t VX_FILE_APPEND = 0x10;

/// Identifies a file. A new file may get the number of a removed one, but not its time of creation.
struct VXFileIdentity {
    std::uint64_t volume;
    std::uint64_t number;
    /// Nanoseconds since 1970; 0 if the file system does not store it.
    std::int64_t born;

    friend bool operator==(const VXFileIdentity&, const VXFileIdentity&) noexcept = default;
};

/// The state of a file at one moment. If two states differ in any field, the content may have changed.
struct VXFileStatus {
    VXFileIdentity identity;
    std::int64_t size;
    /// When the content was last changed: nanoseconds since 1970, in the steps of the system's clock.
    std::int64_t modified;

    bool operator==(const VXFileStatus&) const noexcept = default;
};

/// Opens a file, close-on-exec. `flags` must include reading or writing, and may only truncate for writing. `access` is
/// the mode of a new file, reduced by the process's mask. `*handle` is `VX_FILE_INVALID_HANDLE` after a failure. A
/// directory gives RESULT_IS_DIRECTORY.
VXSYS_API std::int32_t VXFileOpen(
    const char16_t* path, std::uint32_t flags, std::int32_t access, std::uint32_t* handle) noexcept;
/// Opens the file of `handle` again, whatever its name is now, with a separate position. `flags` are as above, without
/// `VX_FILE_CREATE`. The user must have the right to open the file that way.
VXSYS_API std::int32_t VXFileReopen(std::uint32_t handle, std::uint32_t flags, std::uint32_t* other) noexcept;
/// A valid handle is closed even if this fails. A failure then means that the system could not store what was written.
VXSYS_API std::int32_t VXFileClose(std::uint32_t handle) noexcept;
/// The size of the file in bytes.
VXSYS_API std::int32_t VXFileGetSize(std::uint32_t handle, std::int64_t* size) noexcept;

/// One system call that reads up to `length` bytes. `*done` is 0 at the end of the file and after a failure.
VXSYS_API std::int32_t VXFileRead(std::uint32_t handle, void* target, std::int32_t length, std::int32_t* done) noexcept;
/// As above, but reads from byte `position` on and does not move the handle's position.
VXSYS_API std::int32_t VXFileReadAt(
    std::uint32_t handle, std::int64_t position, void* target, std::int32_t length, std::int32_t* done) noexcept;
/// One system call. `*done` may be less than `length`. Writing to a closed pipe or connection is a failure, not a
/// signal.
VXSYS_API std::int32_t VXFileWrite(
    std::uint32_t handle, const void* source, std::int32_t length, std::int32_t* done) noexcept;
/// RESULT_OK for a regular file, RESULT_FALSE for a device, a pipe or a connection.
VXSYS_API std::int32_t VXFileIsRegular(std::uint32_t handle) noexcept;
/// `VXFileWrite` for a regular file only. It saves a system call, because a regular file has no other end that could be
/// closed.
VXSYS_API std::int32_t VXFileWriteRegular(
    std::uint32_t handle, const void* source, std::int32_t length, std::int32_t* done) noexcept;
/// Moves to the end and stores the position. -1 for a pipe or a terminal, which have no position.
VXSYS_API std::int32_t VXFileSeekToEnd(std::uint32_t handle, std::int64_t* position) noexcept;
/// The position of the next byte to read or write; -1 if the handle has no position.
VXSYS_API std::int32_t VXFileGetPosition(std::uint32_t handle, std::int64_t* position) noexcept;
/// Makes the file `size` bytes long: truncates it, or appends zero bytes. The position does not change.
VXSYS_API std::int32_t VXFileTruncate(std::uint32_t handle, std::int64_t size) noexcept;
/// Sets the mode of the file, whatever the mask of the process is.
VXSYS_API std::int32_t VXFileSetAccess(std::uint32_t handle, std::int32_t access) noexcept;
/// Flushes to disk. Succeeds for a pipe or a terminal, which have nothing to flush.
VXSYS_API std::int32_t VXFileFlush(std::uint32_t handle) noexcept;
/// Identifies the file, whatever its name: two handles for one file give the same identity.
VXSYS_API std::int32_t VXFileGetIdentity(std::uint32_t handle, VXFileIdentity* identity) noexcept;
/// The identity, size and time of the file `path`. Symbolic links are followed.
VXSYS_API std::int32_t VXFileGetStatus(const char16_t* path, VXFileStatus* status) noexcept;
/// Replaces the content of the file by `length` bytes in one step. A process that opens the file finds either the whole
/// old content or the whole new one, even after a kill or with a full disk. After a failure the file has the old
/// content, unless only the flush of its folder failed. It keeps its owner, its permissions and its symbolic link; a new
/// file gets `access` as in VXFileOpen. RESULT_ACCESS_DENIED if the file or its folder may not be written, and for the
/// link of another user in a folder such as "/tmp". If `status` is not null, `*status` becomes that of the new file.
VXSYS_API std::int32_t VXFileReplace(
    const char16_t* path, const void* content, std::int64_t length, std::int32_t access, VXFileStatus* status) noexcept;

/// The new content of a file, which is written first and then replaces the file. Until then it has no name, if the file
/// system supports that, so a kill leaves nothing. On other file systems it has a temporary name in the same folder.
using VXFileReplacement = struct VXFileReplacementTag*;

/// Starts a replacement, which `VXFileReplace` does in one call. The caller writes the content to `*handle`, which
/// belongs to the replacement and must not be closed. After a failure `*replacement` is null.
VXSYS_API std::int32_t VXFileReplaceBegin(
    const char16_t* path, std::int32_t access, VXFileReplacement* replacement, std::uint32_t* handle) noexcept;
/// Flushes the content to disk and replaces the file. After a failure the file has its old content, unless only the
/// flush of its folder failed. May be called once for each replacement. If `status` is not null, `*status` becomes that
/// of the new file.
VXSYS_API std::int32_t VXFileReplaceCommit(VXFileReplacement replacement, VXFileStatus* status) noexcept;
/// Ends a replacement: closes the handle and drops what was not committed. A child process by `fork` ends only its
/// copy.
VXSYS_API std::int32_t VXFileReplaceEnd(VXFileReplacement replacement) noexcept;
/// Only removes the temporary name of a replacement that was not committed. For a signal handler that ends the program.
VXSYS_API void VXFileReplaceDiscard(VXFileReplacement replacement) noexcept;

/// The handle of a stream of the C library, which still owns it. `VX_FILE_INVALID_HANDLE` if it has none.
VXSYS_API std::uint32_t VXFileFromStream(std::FILE* stream) noexcept;

/// Writes the full, normalised form of `path` ("C:\...") to `target` of `size` units, zero-terminated. It has single
/// separators, no "." and "..", an upper-case drive, and a separator at the end only if `path` has one. The two texts
/// must not overlap. RESULT_BUFFER_TOO_SMALL if there is no room; `target` is empty after any failure. The file need
/// not exist.
VXSYS_API std::int32_t VXPathExpand(const char16_t* path, char16_t* target, std::int32_t size) noexcept;
/// The current directory ("C:\home\me") and the directory for temporary files ("C:\tmp\", with a separator at its end),
/// as VXPathExpand writes them. The latter is that of TMPDIR if files can be created there. RESULT_INVALID_NAME for a
/// directory whose name is not UTF-8 or contains a backslash.
VXSYS_API std::int32_t VXPathGetCurrent(char16_t* target, std::int32_t size) noexcept;
VXSYS_API std::int32_t VXPathGetTemp(char16_t* target, std::int32_t size) noexcept;
}
