#include "vxsys/Lock.h"
#include "vxsys/detail/Waitable.h"

#include <cerrno>
#include <cstdint>
#include <limits>

namespace {

using namespace vxsys::detail;

class Semaphore final : public Waitable<SemaphoreHandle> {
public:
    Semaphore() noexcept
        : Waitable(false)
    {
    }

    int init(std::uint32_t value) noexcept;
    int wait(const Deadline& deadline) noexcept override;
    int post() noexcept override;
    int value(std::int32_t& count) noexcept override;

private:
    static constexpr std::int32_t LARGEST = std::numeric_limits<std::int32_t>::max();

    std::int32_t m_value VX_GUARDED_BY(m_monitor) = 0;
};

int Semaphore::init(std::uint32_t value) noexcept
{
    if (value > LARGEST)
        return EINVAL;
    const MonitorLock lock(m_monitor);
    m_value = static_cast<std::int32_t>(value);
    return m_monitor.init();
}

int Semaphore::post() noexcept
{
    const MonitorLock lock(m_monitor);
    if (m_value == LARGEST)
        return EOVERFLOW;
    ++m_value;
    m_monitor.wakeOne();
    return 0;
}

int Semaphore::value(std::int32_t& count) noexcept
{
    const MonitorLock lock(m_monitor);
    count = m_value;
    return 0;
}

int Semaphore::wait(const Deadline& deadline) noexcept
{
    const MonitorLock lock(m_monitor);
    const int error = waitUntil(deadline, [this]() VX_REQUIRES(m_monitor) { return m_value > 0; });
    if (error == 0)
        --m_value;
    return error;
}

} // namespace

std::int32_t VXSemaphoreCreate(std::uint32_t value, const char* name, std::uint32_t, VXHandle* semaphore) noexcept
{
    return createHandle<Semaphore>(semaphore, name, value);
}

std::int32_t VXSemaphoreWait(VXHandle semaphore) noexcept
{
    return acquireUntil<&SemaphoreHandle::wait>(semaphore, VX_WAIT_FOREVER);
}

std::int32_t VXSemaphoreTryWait(VXHandle semaphore) noexcept
{
    return acquireUntil<&SemaphoreHandle::wait>(semaphore, 0);
}

std::int32_t VXSemaphoreTimedWait(VXHandle semaphore, std::uint32_t milliseconds) noexcept
{
    return acquireUntil<&SemaphoreHandle::wait>(semaphore, milliseconds);
}

std::int32_t VXSemaphorePost(VXHandle semaphore) noexcept
{
    noteRelease(semaphore, LockOrder::Release::BY_ANY_THREAD);
    return onHandle<&SemaphoreHandle::post>(semaphore);
}

std::int32_t VXSemaphoreGetValue(VXHandle semaphore, std::int32_t* value) noexcept
{
    if (value == nullptr)
        return VXResultFromNative(EINVAL);
    *value = 0;
    return onHandle<&SemaphoreHandle::value>(semaphore, *value);
}

std::int32_t VXSemaphoreDestroy(VXHandle semaphore) noexcept
{
    auto* object = objectOf<SemaphoreHandle>(semaphore);
    if (object == nullptr || object->isNamed)
        return VXResultFromNative(EINVAL);
    const int error = static_cast<Semaphore*>(object)->destroyable();
    if (error == 0)
        delete object;
    return VXResultFromNative(error);
}
