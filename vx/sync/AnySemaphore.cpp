#include "vx/sync/AnySemaphore.h"

#include "vx/Exception.h"
#include "vx/sync/detail/Answers.h"

namespace vx::sync {

AnySemaphore::~AnySemaphore() noexcept(false) = default;

void AnySemaphore::wait()
{
    throwIfFailed(VXSemaphoreWait(m_handle));
}

bool AnySemaphore::tryWait()
{
    return !failed(VXSemaphoreTryWait(m_handle));
}

void AnySemaphore::signal()
{
    throwIfFailed(VXSemaphorePost(m_handle));
}

std::int32_t AnySemaphore::getValue()
{
    std::int32_t value = 0;
    throwIfFailed(VXSemaphoreGetValue(m_handle, &value));
    return value;
}

bool AnySemaphore::waitFor(std::uint32_t milliseconds)
{
    return detail::answerOfTimedWait(VXSemaphoreTimedWait(m_handle, milliseconds));
}

} // namespace vx::sync
