#pragma once

#include "vx/Object.h"

#include <cstdint>

namespace vx::ipc {

/// Memory that all processes of a user share by its name, to read and to write. It is zero at first, and is removed
/// when the last process has closed it.
class VX_API SharedMemory : public Object {
public:
    /// The numbers are the size in bytes, the access and the flags of VXSharedMemOpen; access that lacks VX_FILE_READ
    /// or VX_FILE_WRITE cannot be attached. Throws ResultException with a message that says which step failed.
    SharedMemory(const char* name, unsigned int first, unsigned int second, unsigned int third);
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;
    ~SharedMemory() noexcept(false) override;

    /// The address in this process, valid until the object is destroyed.
    void* get() { return m_address; }
    operator void*() { return m_address; }

private:
    std::uint32_t m_handle;
    void* m_address = nullptr;
};

} // namespace vx::ipc
