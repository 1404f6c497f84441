#include "vx/sync/Gate.h"

#include "vx/detail/ReleaseReport.h"
#include "vx/sync/detail/Answers.h"

namespace vx::sync {

Gate::Gate(const char* name, unsigned int flags)
{
    throwIfFailed(VXGateCreate(name, flags, &m_handle));
}

Gate::~Gate() noexcept(false)
{
    vx::detail::ReleaseReport::ofDestructor().report(VXGateDestroy(m_handle));
}

void Gate::wait()
{
    throwIfFailed(VXGateWait(m_handle));
}

bool Gate::tryWait()
{
    return !failed(VXGateTryWait(m_handle));
}

bool Gate::wait(std::uint32_t milliseconds)
{
    return detail::answerOfTimedWait(VXGateTimedWait(m_handle, milliseconds));
}

void Gate::open()
{
    throwIfFailed(VXGateOpen(m_handle));
}

void Gate::close()
{
    throwIfFailed(VXGateClose(m_handle));
}

} // namespace vx::sync
