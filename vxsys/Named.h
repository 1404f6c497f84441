#pragma once

#include "vxsys/Api.h"
#include "vxsys/File.h"
#include "vxsys/Lock.h"

#include <cstdint>

/// Objects that the processes of one user share by name. A name is any narrow text, compared byte by byte; null is an
/// error. It is stored as a file in a private folder of the user in the memory file system, and never outside that
/// folder. Negative is failure.
///
/// An object exists as long as a process has it open. After the last one has closed it, or has ended in any way, the
/// next open creates a new object. A child process by `fork` has the objects of its parent open, but holds nothing of
/// them. A program that is started by `exec` has none open. Each namespace of process numbers has its own objects: a
/// child process in a new one opens its semaphores anew there.
extern "C" {

/// The path of the memory file system, for messages to people.
inline constexpr const char16_t* VX_NAMED_OBJECTS_PLACE = u"/dev/shm";

/// Opens the semaphore `name`. `value`, at most 2^31 - 1, is the initial count if no process has it open. Use the
/// `VXSemaphore...` functions to wait, to post and to read the count. All handles of a process for one name are the
/// same object. What the process has taken and not posted is returned when it closes the last handle, or within a
/// second after the process ends in any way.
VXSYS_API std::int32_t VXNamedSemOpen(const char* name, std::uint32_t value, VXHandle* semaphore) noexcept;
/// Fails for the last handle of a process while one of its threads waits; the handle then stays open.
VXSYS_API std::int32_t VXNamedSemClose(VXHandle semaphore) noexcept;

/// What the holder of a named semaphore is about to write. The note is stored with the semaphore. If the holder is
/// killed, the next holder reads here what may be incomplete.
struct VXNamedSemNote {
    static constexpr std::uint32_t MOST_PROOF = 1008;

    VXFileIdentity file;
    std::int64_t start;
    /// The number of bytes to be written. 0 means that nothing has to be repaired. Then `file` and `start` are what the last
    /// holder stored, and the proof has no meaning.
    std::int64_t length;
    /// The number of bytes used in `proof`.
    std::uint32_t proofLength;
    /// Identifies the written bytes later. The holder chooses the form.
    alignas(8) std::uint8_t proof[MOST_PROOF];
};

/// Both are for a process that holds the semaphore; others get RESULT_ACCESS_DENIED. If the process is killed in the
/// first one, there is no note. A note remains even if all processes that have the semaphore open are killed, because
/// the file still has to be repaired.
VXSYS_API std::int32_t VXNamedSemSetNote(VXHandle semaphore, const VXNamedSemNote* note) noexcept;
VXSYS_API std::int32_t VXNamedSemGetNote(VXHandle semaphore, VXNamedSemNote* note) noexcept;

/// Creates the memory if it is missing.
inline constexpr std::uint32_t VX_SHARED_MEMORY_CREATE = 0x1;
/// Fails if the memory exists.
inline constexpr std::uint32_t VX_SHARED_MEMORY_EXCLUSIVE = 0x2;

/// Opens the memory `name`. New memory has `size` zero bytes, and its size does not change. Existing memory must have
/// at least `size` bytes; 0 accepts any size. `access` combines VX_FILE_READ and VX_FILE_WRITE, `flags` the two
/// constants above. `*handle` is `VX_FILE_INVALID_HANDLE` after a failure. All of the memory is allocated at once:
/// RESULT_DISK_FULL if there is too little.
VXSYS_API std::int32_t VXSharedMemOpen(
    const char* name, std::uint32_t access, std::uint32_t flags, std::uint32_t size, std::uint32_t* handle) noexcept;
/// Maps the memory at a new address. `access` must be part of that of the open.
VXSYS_API std::int32_t VXSharedMemAttach(std::uint32_t handle, std::uint32_t access, void** address) noexcept;
/// Ends the use of an address. An attached address keeps the memory open even if the handle is closed.
VXSYS_API std::int32_t VXSharedMemDetach(void* address) noexcept;
VXSYS_API std::int32_t VXSharedMemClose(std::uint32_t handle) noexcept;
}
