#pragma once

#include "vxsys/Api.h"
#include "vxsys/Lock.h"

#include <cstdint>

/// What several processes share by name. A name is any narrow text; it reaches a private file of the user and never
/// leaves that folder. Negative is failure.
extern "C" {

/// Opens the semaphore `name`, or makes it with `value` when no live process has it open. Waiting, posting and the value
/// go through the `VXSemaphore...` calls. What a process holds when it dies, however it dies, comes back to the others
/// within a second.
VXSYS_API std::int32_t VXNamedSemOpen(const char* name, std::uint32_t value, VXHandle* semaphore) noexcept;
VXSYS_API std::int32_t VXNamedSemClose(VXHandle semaphore) noexcept;

/// What the holder of a named semaphore is about to write, kept with the semaphore: whoever takes it after a holder that
/// died reads here what may have been left half done. `length` 0 is no note.
struct VXNamedSemNote {
    std::uint64_t volume;
    std::uint64_t file;
    std::int64_t start;
    std::int64_t length;
};

/// Both are called by the holder only. A fresh semaphore has no note; a death in the middle of the call leaves none.
VXSYS_API std::int32_t VXNamedSemSetNote(VXHandle semaphore, const VXNamedSemNote* note) noexcept;
VXSYS_API std::int32_t VXNamedSemGetNote(VXHandle semaphore, VXNamedSemNote* note) noexcept;

/// Opens the memory `name` of `size` bytes. `access` is made of VX_FILE_READ and VX_FILE_WRITE; `flags` bit 0: make it when
/// missing; bit 1: fail when it is there. With `size` 0 an existing block keeps its size.
VXSYS_API std::int32_t VXSharedMemOpen(
    const char* name, std::uint32_t access, std::uint32_t flags, std::uint32_t size, std::uint32_t* handle) noexcept;
VXSYS_API std::int32_t VXSharedMemAttach(std::uint32_t handle, std::uint32_t access, void** address) noexcept;
VXSYS_API std::int32_t VXSharedMemDetach(void* address) noexcept;
VXSYS_API std::int32_t VXSharedMemClose(std::uint32_t handle) noexcept;
}
