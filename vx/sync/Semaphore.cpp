#include "vx/sync/Semaphore.h"

#include "vx/detail/ReleaseReport.h"
#include "vx/sync/detail/Answers.h"

namespace vx::sync {

Semaphore::Semaphore(std::uint32_t value, const char* name, unsigned int flags)
{
    throwIfFailed(VXSemaphoreCreate(value, name, flags, &m_handle));
}

Semaphore::~Semaphore() noexcept(false)
{
    vx::detail::ReleaseReport::ofDestructor().report(VXSemaphoreDestroy(m_handle));
}

} // namespace vx::sync
