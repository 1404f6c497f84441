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

/// Opens the memory `name` of `size` bytes. `access` is made of VX_FILE_READ and VX_FILE_WRITE; `flags` bit 0: make it when
/// missing; bit 1: fail when it is there. With `size` 0 an existing block keeps its size.
VXSYS_API std::int32_t VXSharedMemOpen(
    const char* name, std::uint32_t access, std::uint32_t flags, std::uint32_t size, std::uint32_t* handle) noexcept;
VXSYS_API std::int32_t VXSharedMemAttach(std::uint32_t handle, std::uint32_t access, void** address) noexcept;
VXSYS_API std::int32_t VXSharedMemDetach(void* address) noexcept;
VXSYS_API std::int32_t VXSharedMemClose(std::uint32_t handle) noexcept;
}
