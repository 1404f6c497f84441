#include "vxsys/Thread.h"

#include "vxsys/Result.h"
#include "vxsys/detail/Deadline.h"
#include "vxsys/detail/Monitor.h"
#include "vxsys/detail/Steps.h"
#include "vxsys/detail/ThreadNumber.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <ctime>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

static_assert(sizeof(VXThreadHandle) >= sizeof(pthread_t));

/// More than the system's minimum, so that a thread with a small stack can still call some functions.
constexpr std::size_t LEAST_STACK = 64 * 1024;

/// What a new thread gets from its creator. It is on the creator's stack, which stays valid until the thread has stored
/// its identifier.
struct Start {
    VXThreadFunction function;
    void* argument;
    Monitor monitor;
    std::uint32_t id VX_GUARDED_BY(monitor) = 0;
};

void* runThread(void* argument)
{
    auto* start = static_cast<Start*>(argument);
    const VXThreadFunction function = start->function;
    void* const functionArgument = start->argument;
    const std::uint32_t id = VXThreadGetCurrentId();
    {
        const MonitorLock lock(start->monitor);
        start->id = id;
        start->monitor.wakeOne();
    }
    return function(functionArgument);
}

/// The attributes of a new thread, to the end of the block.
class Attributes {
public:
    Attributes() noexcept
        : m_error(::pthread_attr_init(&m_value))
    {
    }
    ~Attributes()
    {
        if (m_error == 0)
            ::pthread_attr_destroy(&m_value);
    }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    int setStackSize(std::size_t bytes) noexcept
    {
        if (m_error != 0 || bytes == 0)
            return m_error;
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        const auto least = static_cast<std::size_t>(std::max(::sysconf(_SC_THREAD_STACK_MIN), 0L));
        bytes = std::max({bytes, least, LEAST_STACK});
        return ::pthread_attr_setstacksize(&m_value, (bytes + page - 1) / page * page);
    }
    const pthread_attr_t* get() const noexcept { return &m_value; }

private:
    pthread_attr_t m_value;
    const int m_error;
};

} // namespace

namespace vxsys::detail {

constinit thread_local std::uint64_t t_threadNumber = 0;

std::uint64_t makeThreadNumber() noexcept
{
    static constinit std::atomic<std::uint64_t> last {0};
    t_threadNumber = last.fetch_add(1, std::memory_order_relaxed) + 1;
    return t_threadNumber;
}

} // namespace vxsys::detail

std::int32_t VXThreadCreate(VXThreadFunction function, void* argument, std::uint32_t flags, std::uint32_t stackSize,
    VXThreadHandle* handle, std::uint32_t* id) noexcept
{
    if (handle == nullptr || id == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *handle = VX_THREAD_INVALID_HANDLE;
    *id = 0;
    if (function == nullptr || flags != 0)
        return RESULT_INVALID_ARGUMENT;

    Start start {function, argument, {}, 0};
    Attributes attributes;
    pthread_t thread {};
    if (const int error
        = inOrder([&] { return start.monitor.init(); }, [&] { return attributes.setStackSize(stackSize); },
            [&] { return ::pthread_create(&thread, attributes.get(), runThread, &start); }))
        return VXResultFromNative(error);

    const MonitorLock lock(start.monitor);
    start.monitor.waitUntil(Deadline(), [&]() VX_REQUIRES(start.monitor) { return start.id != 0; });
    *handle = static_cast<VXThreadHandle>(thread);
    *id = start.id;
    return RESULT_OK;
}

std::int32_t VXThreadJoin(VXThreadHandle handle, void** result) noexcept
{
    if (result == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *result = nullptr;
    if (handle == VX_THREAD_INVALID_HANDLE)
        return RESULT_INVALID_HANDLE;
    if (::pthread_equal(static_cast<pthread_t>(handle), ::pthread_self()) != 0)
        return VXResultFromNative(EDEADLK);
    return VXResultFromNative(::pthread_join(static_cast<pthread_t>(handle), result));
}

std::int32_t VXThreadDetach(VXThreadHandle handle) noexcept
{
    if (handle == VX_THREAD_INVALID_HANDLE)
        return RESULT_INVALID_HANDLE;
    return VXResultFromNative(::pthread_detach(static_cast<pthread_t>(handle)));
}

std::uint64_t VXThreadGetNumber() noexcept
{
    return threadNumber();
}

void VXThreadSleep(std::uint32_t milliseconds) noexcept
{
    if (milliseconds == 0) {
        ::sched_yield();
        return;
    }
    const Deadline end = Deadline::in(milliseconds);
    if (end.isNever()) {
        for (;;)
            ::pause();
    }
    while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end.time(), nullptr) == EINTR) { }
}
