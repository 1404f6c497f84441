#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/sync/Condition.h"
#include "vx/sync/Event.h"
#include "vx/sync/Gate.h"
#include "vx/sync/Semaphore.h"

#include <exception>

namespace vx::sync {

namespace {

/// The answer of a timed wait: true for exactly 0, false for a time-out and for any other success.
bool waited(std::int32_t result)
{
    if (result == RESULT_TIMED_OUT)
        return false;
    throwIfFailed(result);
    return result == RESULT_OK;
}

} // namespace

Semaphore::Semaphore(std::uint32_t value, const char* name, unsigned int flags)
{
    throwIfFailed(VXSemaphoreCreate(value, name, flags, &m_handle));
}

Semaphore::~Semaphore() noexcept(false)
{
    throwIfFailed(VXSemaphoreDestroy(m_handle));
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

Event::Event(const char* name, unsigned int flags)
{
    throwIfFailed(VXEventCreate(name, flags, &m_handle));
}

Event::~Event() noexcept(false)
{
    throwIfFailed(VXEventDestroy(m_handle));
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
    return waited(VXEventTimedWait(m_handle, milliseconds));
}

void Event::signal()
{
    throwIfFailed(VXEventSignal(m_handle));
}

Gate::Gate(const char* name, unsigned int flags)
{
    throwIfFailed(VXGateCreate(name, flags, &m_handle));
}

Gate::~Gate() noexcept(false)
{
    throwIfFailed(VXGateDestroy(m_handle));
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
    return waited(VXGateTimedWait(m_handle, milliseconds));
}

void Gate::open()
{
    throwIfFailed(VXGateOpen(m_handle));
}

void Gate::close()
{
    throwIfFailed(VXGateClose(m_handle));
}

Condition::Condition(const char* name, unsigned int flags)
{
    throwIfFailed(VXConditionCreate(name, flags, &m_handle));
}

Condition::~Condition() noexcept
{
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
    , m_exceptionsAtStart(std::uncaught_exceptions())
{
    m_condition.acquire();
}

Condition::Holder::~Holder() noexcept(false)
{
    try {
        m_condition.release();
    } catch (...) {
        if (std::uncaught_exceptions() <= m_exceptionsAtStart)
            throw;
    }
}

} // namespace vx::sync
