#include "vx/ipc/SharedMemory.h"

#include "vx/Exception.h"
#include "vx/Occasion.h"
#include "vx/Result.h"
#include "vxsys/Named.h"

namespace vx::ipc {

SharedMemory::SharedMemory(const char* name, unsigned int first, unsigned int second, unsigned int third)
    : m_handle(VX_FILE_INVALID_HANDLE)
{
    std::int32_t result = VXSharedMemOpen(name, second, third, first, &m_handle);
    if (failed(result))
        throwDuring(u"open", name, ResultException(result, u"Failed to open shared memory."));
    result = VXSharedMemAttach(m_handle, VX_FILE_READ | VX_FILE_WRITE, &m_address);
    if (failed(result)) {
        VXSharedMemClose(m_handle);
        throwDuring(u"attach", name, ResultException(result, u"Failed to attach shared memory"));
    }
}

SharedMemory::~SharedMemory() noexcept(false)
{
    if (m_address != nullptr)
        VXSharedMemDetach(m_address);
    if (m_handle != VX_FILE_INVALID_HANDLE)
        VXSharedMemClose(m_handle);
}

} // namespace vx::ipc
