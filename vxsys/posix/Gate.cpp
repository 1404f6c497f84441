#include "vxsys/Lock.h"
#include "vxsys/detail/Waitable.h"

#include <cstdint>

namespace {

using namespace vxsys::detail;

class Gate final : public Waitable<HandleOf<HandleKind::GATE>> {
public:
    int wait(const Deadline& deadline) noexcept;
    int set(bool isOpen) noexcept;

private:
    bool m_isOpen VX_GUARDED_BY(m_monitor) = false;
    std::uint64_t m_openings VX_GUARDED_BY(m_monitor) = 0;
};

int Gate::wait(const Deadline& deadline) noexcept
{
    const MonitorLock lock(m_monitor);
    // Opening releases all threads that are waiting at that moment, even if the gate is closed before they run.
    const std::uint64_t before = m_openings;
    return waitUntil(deadline, [&]() VX_REQUIRES(m_monitor) { return m_isOpen || m_openings != before; });
}

int Gate::set(bool isOpen) noexcept
{
    const MonitorLock lock(m_monitor);
    m_isOpen = isOpen;
    if (isOpen) {
        ++m_openings;
        m_monitor.wakeAll();
    }
    return 0;
}

} // namespace

std::int32_t VXGateCreate(const char* name, std::uint32_t, VXHandle* gate) noexcept
{
    return createHandle<Gate>(gate, name);
}

std::int32_t VXGateWait(VXHandle gate) noexcept
{
    return VXGateTimedWait(gate, VX_WAIT_FOREVER);
}

std::int32_t VXGateTryWait(VXHandle gate) noexcept
{
    return VXGateTimedWait(gate, 0);
}

std::int32_t VXGateTimedWait(VXHandle gate, std::uint32_t milliseconds) noexcept
{
    return onHandle<&Gate::wait>(gate, Deadline::in(milliseconds));
}

std::int32_t VXGateOpen(VXHandle gate) noexcept
{
    return onHandle<&Gate::set>(gate, true);
}

std::int32_t VXGateClose(VXHandle gate) noexcept
{
    return onHandle<&Gate::set>(gate, false);
}

std::int32_t VXGateDestroy(VXHandle gate) noexcept
{
    return destroyHandle<Gate>(gate);
}
