#include "vxsys/Lock.h"
#include "vxsys/detail/Handle.h"
#include "vxsys/detail/LockHolder.h"
#include "vxsys/detail/Monitor.h"

#include <cerrno>
#include <cstdint>

namespace {

using namespace vxsys::detail;

class Condition final : public HandleOf<HandleKind::CONDITION> {
public:
    int init() noexcept { return m_monitor.init(); }
    // The lock of the monitor is held from one call to another, which the analysis cannot follow.
    int acquire() noexcept VX_NO_THREAD_SAFETY_ANALYSIS;
    int release() noexcept VX_NO_THREAD_SAFETY_ANALYSIS;
    int wait(const Deadline& deadline) noexcept VX_NO_THREAD_SAFETY_ANALYSIS;
    int signal() noexcept;
    int broadcast() noexcept;
    int destroyable() noexcept;

private:
    Monitor m_monitor;
    LockHolder m_holder;
    std::uint32_t m_waiters VX_GUARDED_BY(m_monitor) = 0;
};

int Condition::acquire() noexcept
{
    if (m_holder.isCaller())
        return EDEADLK;
    const int error = m_monitor.lock();
    if (error == 0)
        m_holder.setCaller();
    return error;
}

int Condition::release() noexcept
{
    if (!m_holder.isCaller())
        return EPERM;
    m_holder.clear();
    return m_monitor.unlock();
}

int Condition::wait(const Deadline& deadline) noexcept
{
    if (!m_holder.isCaller())
        return EPERM;
    m_holder.clear();
    ++m_waiters;
    const int error = m_monitor.wait(deadline);
    --m_waiters;
    m_holder.setCaller();
    return error;
}

int Condition::signal() noexcept
{
    m_monitor.wakeOne();
    return 0;
}

int Condition::broadcast() noexcept
{
    m_monitor.wakeAll();
    return 0;
}

int Condition::destroyable() noexcept
{
    if (!m_holder.isNone())
        return EBUSY;
    const MonitorLock lock(m_monitor);
    return m_waiters == 0 ? 0 : EBUSY;
}

} // namespace

std::int32_t VXConditionCreate(const char* name, std::uint32_t, VXHandle* condition) noexcept
{
    return createHandle<Condition>(condition, name);
}

std::int32_t VXConditionAcquire(VXHandle condition) noexcept
{
    return acquireInOrder(condition, VX_WAIT_FOREVER, [&] { return onHandle<&Condition::acquire>(condition); });
}

std::int32_t VXConditionRelease(VXHandle condition) noexcept
{
    noteRelease(condition, LockOrder::Release::ONCE);
    return onHandle<&Condition::release>(condition);
}

std::int32_t VXConditionWait(VXHandle condition) noexcept
{
    return VXConditionTimedWait(condition, VX_WAIT_FOREVER);
}

std::int32_t VXConditionTimedWait(VXHandle condition, std::uint32_t milliseconds) noexcept
{
    return onHandle<&Condition::wait>(condition, Deadline::in(milliseconds));
}

std::int32_t VXConditionSignal(VXHandle condition) noexcept
{
    return onHandle<&Condition::signal>(condition);
}

std::int32_t VXConditionBroadcast(VXHandle condition) noexcept
{
    return onHandle<&Condition::broadcast>(condition);
}

std::int32_t VXConditionDestroy(VXHandle condition) noexcept
{
    return destroyHandle<Condition>(condition);
}
