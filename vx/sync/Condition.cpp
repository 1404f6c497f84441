#include "vx/sync/Condition.h"

#include "vx/Exception.h"
#include "vx/Result.h"

namespace vx::sync {

Condition::Condition(const char* name, unsigned int flags)
{
    throwIfFailed(VXConditionCreate(name, flags, &m_handle));
}

Condition::~Condition() noexcept
{
    if (!failed(VXConditionDestroy(m_handle)))
        return;
    // This object is destroyed in any case. If the calling thread holds the lock, no other thread can ever release it.
    VXConditionRelease(m_handle);
    VXConditionDestroy(m_handle);
}

void Condition::acquire()
{
    throwIfFailed(VXConditionAcquire(m_handle));
}

void Condition::release()
{
    throwIfFailed(VXConditionRelease(m_handle));
}

void Condition::wait()
{
    throwIfFailed(VXConditionWait(m_handle));
}

void Condition::wait(std::uint32_t milliseconds)
{
    throwIfFailed(VXConditionTimedWait(m_handle, milliseconds));
}

void Condition::signal()
{
    throwIfFailed(VXConditionSignal(m_handle));
}

void Condition::broadcast()
{
    throwIfFailed(VXConditionBroadcast(m_handle));
}

Condition::Holder::Holder(Condition& condition)
    : m_condition(condition)
{
    m_condition.acquire();
}

Condition::Holder::~Holder() noexcept(false)
{
    m_report.run([this]() VX_NO_THREAD_SAFETY_ANALYSIS { m_condition.release(); });
}

} // namespace vx::sync
