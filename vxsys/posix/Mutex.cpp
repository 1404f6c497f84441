#include "vxsys/Lock.h"
#include "vxsys/ThreadAnnotations.h"
#include "vxsys/detail/Deadline.h"
#include "vxsys/detail/Handle.h"
#include "vxsys/detail/LockHolder.h"

#include <cerrno>
#include <cstdint>
#include <ctime>
#include <limits>
#include <pthread.h>
#include <utility>

namespace {

using namespace vxsys::detail;

/// A plain mutex of the system with a separate count: the fastest kind that can tell whether the caller holds it.
class Mutex final : public HandleOf<HandleKind::MUTEX> {
public:
    int init() noexcept { return 0; }
    // The mutex is held from one call to another, which the analysis cannot follow.
    int acquire(std::uint32_t depth) noexcept VX_NO_THREAD_SAFETY_ANALYSIS;
    int tryAcquire() noexcept VX_NO_THREAD_SAFETY_ANALYSIS;
    int acquireUntil(const Deadline& deadline) noexcept VX_NO_THREAD_SAFETY_ANALYSIS;
    int release() noexcept VX_NO_THREAD_SAFETY_ANALYSIS;
    int releaseAll(std::uint32_t& depth) noexcept VX_NO_THREAD_SAFETY_ANALYSIS;
    /// EBUSY for a held mutex, which does not change.
    int destroyable() noexcept;

private:
    int entered(int error, std::uint32_t depth) noexcept VX_NO_THREAD_SAFETY_ANALYSIS;
    int leave() noexcept VX_REQUIRES(m_holder);
    int deepen(std::uint32_t more) noexcept VX_REQUIRES(m_holder);

    pthread_mutex_t m_mutex = PTHREAD_MUTEX_INITIALIZER;
    LockHolder m_holder;
    std::uint32_t m_depth VX_GUARDED_BY(m_holder) = 0;
};

int Mutex::acquire(std::uint32_t depth) noexcept
{
    return m_holder.isCaller() ? deepen(depth) : entered(::pthread_mutex_lock(&m_mutex), depth);
}

int Mutex::tryAcquire() noexcept
{
    const int error = m_holder.isCaller() ? deepen(1) : entered(::pthread_mutex_trylock(&m_mutex), 1);
    return error == EBUSY ? ETIMEDOUT : error;
}

int Mutex::acquireUntil(const Deadline& deadline) noexcept
{
    if (deadline.isNever())
        return acquire(1);
    // Tries first also where a wait is allowed: ThreadSanitizer takes the unlock after a timed lock for a fault.
    const int error = tryAcquire();
    if (error != ETIMEDOUT || deadline.isAtOnce())
        return error;
    return entered(::pthread_mutex_clocklock(&m_mutex, CLOCK_MONOTONIC, &deadline.time()), 1);
}

int Mutex::release() noexcept
{
    if (!m_holder.isCaller())
        return EPERM;
    return --m_depth == 0 ? leave() : 0;
}

int Mutex::releaseAll(std::uint32_t& depth) noexcept
{
    if (!m_holder.isCaller())
        return 0;
    depth = std::exchange(m_depth, 0);
    return leave();
}

int Mutex::destroyable() noexcept
{
    if (m_holder.isCaller())
        return EBUSY;
    if (const int error = ::pthread_mutex_trylock(&m_mutex))
        return error;
    ::pthread_mutex_unlock(&m_mutex);
    return ::pthread_mutex_destroy(&m_mutex);
}

int Mutex::entered(int error, std::uint32_t depth) noexcept
{
    if (error == 0) {
        m_holder.setCaller();
        m_depth = depth;
    }
    return error;
}

int Mutex::leave() noexcept
{
    m_holder.clear();
    return ::pthread_mutex_unlock(&m_mutex);
}

int Mutex::deepen(std::uint32_t more) noexcept
{
    if (more > std::numeric_limits<std::uint32_t>::max() - m_depth)
        return EAGAIN;
    m_depth += more;
    return 0;
}

} // namespace

std::int32_t VXMutexCreate(const char* name, std::uint32_t, VXHandle* mutex) noexcept
{
    return createHandle<Mutex>(mutex, name);
}

std::int32_t VXMutexAcquire(VXHandle mutex) noexcept
{
    return acquireInOrder(mutex, VX_WAIT_FOREVER, [&] { return onHandle<&Mutex::acquire>(mutex, 1); });
}

std::int32_t VXMutexTryAcquire(VXHandle mutex) noexcept
{
    return acquireInOrder(mutex, 0, [&] { return onHandle<&Mutex::tryAcquire>(mutex); });
}

std::int32_t VXMutexTimedAcquire(VXHandle mutex, std::uint32_t milliseconds) noexcept
{
    return acquireUntil<&Mutex::acquireUntil>(mutex, milliseconds);
}

std::int32_t VXMutexRelease(VXHandle mutex) noexcept
{
    noteRelease(mutex, LockOrder::Release::ONCE);
    return onHandle<&Mutex::release>(mutex);
}

std::int32_t VXMutexReleaseAll(VXHandle mutex, std::uint32_t* depth) noexcept
{
    if (depth == nullptr)
        return VXResultFromNative(EINVAL);
    *depth = 0;
    noteRelease(mutex, LockOrder::Release::ALL);
    return onHandle<&Mutex::releaseAll>(mutex, *depth);
}

std::int32_t VXMutexReacquire(VXHandle mutex, std::uint32_t depth) noexcept
{
    if (depth == 0)
        return onHandle<Mutex>(mutex, [](Mutex&) { return 0; });
    return acquireInOrder(
        mutex, VX_WAIT_FOREVER, [&] { return onHandle<&Mutex::acquire>(mutex, depth); }, depth);
}

std::int32_t VXMutexDestroy(VXHandle mutex) noexcept
{
    return destroyHandle<Mutex>(mutex);
}
