#pragma once

#include "vxsys/Api.h"
#include "vxsys/File.h"
#include "vxsys/Lock.h"

#include <cstdint>

/// What several processes of one user share by name. A name is any narrow text, compared byte by byte; null is refused.
/// It stands for a file in a private folder of the user in the memory file system, and never for one elsewhere. Negative is
/// failure.
///
/// An object lives as long as a process has it open. When the last one has closed it or has ended, also by a kill, the next
/// one starts afresh. A child by `fork` has open what its parent had, and holds nothing of it; one by `exec` has nothing open.
extern "C" {

/// The path of the memory file system, for messages to people.
inline constexpr const char16_t* VX_NAMED_OBJECTS_PLACE = u"/dev/shm";

/// Opens the semaphore `name`; `value`, at most 2^31 - 1, is the count of one that nobody has open. Waiting, posting and the
/// value go through the `VXSemaphore...` calls. Handles of one process on one name are one: what the process took and did
/// not post returns to the others when it closes its last handle or, within a second, after it ends in any way.
VXSYS_API std::int32_t VXNamedSemOpen(const char* name, std::uint32_t value, VXHandle* semaphore) noexcept;
/// The last handle of a process stays open, and this is a failure, while a thread of it waits.
VXSYS_API std::int32_t VXNamedSemClose(VXHandle semaphore) noexcept;

/// What the holder of a named semaphore is about to write. It is kept with the semaphore: the process that takes it after a
/// holder that was killed reads here what may be half done.
struct VXNamedSemNote {
    static constexpr std::uint32_t MOST_PROOF = 1008;

    VXFileIdentity file;
    std::int64_t start;
    /// Of the bytes that are written. 0 is no note, and the other fields say nothing then.
    std::int64_t length;
    /// How many bytes of `proof` are used.
    std::uint32_t proofLength;
    /// By which the written bytes are known again; the holder chooses the form.
    alignas(8) std::uint8_t proof[MOST_PROOF];
};

/// Both are for a process that holds the semaphore: RESULT_ACCESS_DENIED for others. A kill during the call leaves no note. A
/// note stays even when all processes that have the semaphore open were killed, for there is still something to repair.
VXSYS_API std::int32_t VXNamedSemSetNote(VXHandle semaphore, const VXNamedSemNote* note) noexcept;
VXSYS_API std::int32_t VXNamedSemGetNote(VXHandle semaphore, VXNamedSemNote* note) noexcept;

/// Made when missing.
inline constexpr std::uint32_t VX_SHARED_MEMORY_CREATE = 0x1;
/// A failure where it is there already.
inline constexpr std::uint32_t VX_SHARED_MEMORY_EXCLUSIVE = 0x2;

/// Opens the memory `name`, which starts as `size` zero bytes and keeps that size; one that is there must have at least
/// `size` bytes; a `size` of 0 accepts any. `access` is made of VX_FILE_READ and VX_FILE_WRITE, `flags` of the two above.
/// `*handle` is `VX_FILE_INVALID_HANDLE` after a failure. The memory is allocated at once: RESULT_DISK_FULL if
/// there is too little.
VXSYS_API std::int32_t VXSharedMemOpen(
    const char* name, std::uint32_t access, std::uint32_t flags, std::uint32_t size, std::uint32_t* handle) noexcept;
/// Maps the memory at a new address each time. `access` must be part of what it was opened for.
VXSYS_API std::int32_t VXSharedMemAttach(std::uint32_t handle, std::uint32_t access, void** address) noexcept;
/// An attached address keeps the memory open, also after the handle is closed.
VXSYS_API std::int32_t VXSharedMemDetach(void* address) noexcept;
VXSYS_API std::int32_t VXSharedMemClose(std::uint32_t handle) noexcept;
}
