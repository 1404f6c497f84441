#include "vx/exec/Thread.h"

#include "vx/Exceptions.h"
#include "vx/Result.h"

#include <typeinfo>

namespace vx::exec {

Thread::Thread(IRunnable* runnable)
    : m_runnable(runnable)
{
}

Thread::Thread(IRunnable* runnable, const String& name)
    : m_runnable(runnable)
    , m_name(name)
{
}

Thread::Thread(const Thread& other)
    : Object(other)
    , m_runnable(other.m_runnable)
    , m_name(other.m_name)
    , m_stackSize(other.m_stackSize)
{
}

Thread::~Thread() noexcept
{
    if (m_handle != VX_THREAD_INVALID_HANDLE)
        VXThreadDetach(m_handle);
}

Object* Thread::clone() const
{
    if (typeid(*this) != typeid(Thread))
        throw CloneNotSupportedException();
    return new Thread(*this);
}

void Thread::start()
{
    checkNotStarted();
    if (m_runnable == nullptr)
        throw IllegalStateException(u"thread has nothing to run");
    Reference<IRunnable> ofThread(m_runnable);
    const std::int32_t result = VXThreadCreate(threadWrapper, ofThread.get(), 0, m_stackSize, &m_handle, &m_id);
    if (failed(result))
        throw ResultException(result, u"thread creation failed");
    static_cast<void>(ofThread.detach()); // the thread releases it
}

void* Thread::join()
{
    checkStarted();
    void* answer = nullptr;
    const std::int32_t result = VXThreadJoin(m_handle, &answer);
    if (failed(result))
        throw ResultException(result, u"thread join failed");
    m_handle = VX_THREAD_INVALID_HANDLE;
    m_id = 0;
    return answer;
}

unsigned int Thread::getID()
{
    checkStarted();
    return m_id;
}

String Thread::getName()
{
    return m_name;
}

void Thread::setStackSize(unsigned int size)
{
    checkNotStarted();
    m_stackSize = size;
}

unsigned int Thread::getCurrentID()
{
    return VXThreadGetCurrentId();
}

void Thread::sleep(unsigned int milliseconds)
{
    VXThreadSleep(milliseconds);
}

void* Thread::threadWrapper(void* argument)
{
    Reference<IRunnable> runnable;
    runnable.attach(static_cast<IRunnable*>(argument));
    try {
        return runnable->run();
    } catch (...) {
        vxsys::passForcedUnwind();
        return nullptr;
    }
}

void Thread::checkStarted() const
{
    if (m_handle == VX_THREAD_INVALID_HANDLE)
        throw IllegalStateException(u"thread not started");
}

void Thread::checkNotStarted() const
{
    if (m_handle != VX_THREAD_INVALID_HANDLE)
        throw IllegalStateException(u"thread already started");
}

} // namespace vx::exec
