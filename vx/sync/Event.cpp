#include "vx/sync/Event.h"

#include "vx/detail/ReleaseReport.h"
#include "vx/sync/detail/Answers.h"

namespace vx::sync {

Event::Event(const char* name, unsigned int flags)
{
    throwIfFailed(VXEventCreate(name, flags, &m_handle));
}

Event::~Event() noexcept(false)
{
    vx::detail::ReleaseReport::ofDestructor().report(VXEventDestroy(m_handle));
}

void Event::wait()
{
    throwIfFailed(VXEventWait(m_handle));
}

bool Event::tryWait()
{
    return false;
}

bool Event::wait(std::uint32_t milliseconds)
{
    return detail::answerOfTimedWait(VXEventTimedWait(m_handle, milliseconds));
}

void Event::signal()
{
    throwIfFailed(VXEventSignal(m_handle));
}

} // namespace vx::sync
