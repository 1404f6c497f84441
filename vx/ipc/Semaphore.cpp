#include "vx/ipc/Semaphore.h"

#include "vx/Exception.h"
#include "vx/Result.h"

namespace vx::ipc {

Semaphore::Semaphore(const char* name, std::uint32_t value)
{
    throwIfFailed(VXNamedSemOpen(name, value, &m_handle));
}

Semaphore::~Semaphore() noexcept(false)
{
    throwIfFailed(VXNamedSemClose(m_handle));
}

void Semaphore::wait()
{
    throwIfFailed(VXSemaphoreWait(m_handle));
}

bool Semaphore::tryWait()
{
    return !failed(VXSemaphoreTryWait(m_handle));
}

void Semaphore::signal()
{
    throwIfFailed(VXSemaphorePost(m_handle));
}

std::int32_t Semaphore::getValue()
{
    std::int32_t value = 0;
    throwIfFailed(VXSemaphoreGetValue(m_handle, &value));
    return value;
}

void Semaphore::setNote(const VXNamedSemNote& note)
{
    throwIfFailed(VXNamedSemSetNote(m_handle, &note));
}

VXNamedSemNote Semaphore::getNote()
{
    VXNamedSemNote note {};
    throwIfFailed(VXNamedSemGetNote(m_handle, &note));
    return note;
}

} // namespace vx::ipc
