#include "vx/sync/Semaphore.h"

#include "vx/sync/detail/Answers.h"

namespace vx::sync {

Semaphore::Semaphore(std::uint32_t value, const char* name, unsigned int flags)
{
    throwIfFailed(VXSemaphoreCreate(value, name, flags, &m_handle));
}

Semaphore::~Semaphore() noexcept(false)
{
    detail::throwIfDestructionFailed(VXSemaphoreDestroy(m_handle));
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

} // namespace vx::sync
