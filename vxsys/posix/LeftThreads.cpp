#include "vxsys/Memory.h"
#include "vxsys/Result.h"
#include "vxsys/Thread.h"
#include "vxsys/detail/StateLock.h"

#include <atomic>
#include <cerrno>
#include <memory>
#include <new>
#include <pthread.h>
#include <utility>

namespace {

using namespace vxsys::results;
using namespace vxsys::detail;

constinit StateLock g_lock;

struct Tracked {
    pthread_t thread;
    bool isLeft VX_GUARDED_BY(g_lock);
    Tracked* next VX_GUARDED_BY(g_lock);
};

constinit Tracked* g_first VX_GUARDED_BY(g_lock) = nullptr;

void destroy(Tracked* tracked) noexcept
{
    vxsys::deallocate(tracked);
}

/// Removes from the list the threads that were left and have ended.
void dropEnded() noexcept VX_REQUIRES(g_lock)
{
    for (Tracked** place = &g_first; *place != nullptr;) {
        if ((*place)->isLeft && ::pthread_tryjoin_np((*place)->thread, nullptr) != EBUSY)
            destroy(std::exchange(*place, (*place)->next));
        else
            place = &(*place)->next;
    }
}

/// Removes one thread that was left from the list; null if there is none.
Tracked* takeLeft() noexcept
{
    const StateGuard guard(g_lock);
    Tracked** place = &g_first;
    while (*place != nullptr && !(*place)->isLeft)
        place = &(*place)->next;
    return *place != nullptr ? std::exchange(*place, (*place)->next) : nullptr;
}

void beforeFork() noexcept VX_ACQUIRE(g_lock)
{
    g_lock.lock();
}

void afterForkInParent() noexcept VX_RELEASE(g_lock)
{
    g_lock.unlock();
}

/// A child process does not have these threads.
void afterForkInChild() noexcept VX_RELEASE(g_lock)
{
    while (g_first != nullptr)
        destroy(std::exchange(g_first, g_first->next));
    g_lock.unlock();
}

} // namespace

std::int32_t VXThreadTrack(VXThreadHandle handle) noexcept
{
    if (handle == VX_THREAD_INVALID_HANDLE)
        return RESULT_INVALID_HANDLE;
    static constinit std::atomic<bool> s_handlesForks = false;
    handleForks(s_handlesForks, beforeFork, afterForkInParent, afterForkInChild);

    Tracked* tracked = nullptr;
    try {
        tracked = static_cast<Tracked*>(vxsys::allocate(sizeof(Tracked)));
    } catch (...) {
        return RESULT_OUT_OF_MEMORY;
    }
    const StateGuard guard(g_lock);
    dropEnded();
    g_first = ::new (tracked) Tracked {static_cast<pthread_t>(handle), false, g_first};
    return RESULT_OK;
}

std::int32_t VXThreadLeave(VXThreadHandle handle) noexcept
{
    const StateGuard guard(g_lock);
    dropEnded();
    for (Tracked* tracked = g_first; tracked != nullptr; tracked = tracked->next) {
        if (!tracked->isLeft && ::pthread_equal(tracked->thread, static_cast<pthread_t>(handle)) != 0) {
            tracked->isLeft = true;
            return RESULT_OK;
        }
    }
    return RESULT_INVALID_HANDLE;
}

void VXThreadJoinLeft() noexcept
{
    while (Tracked* const left = takeLeft()) {
        if (::pthread_equal(left->thread, ::pthread_self()) != 0)
            ::pthread_detach(left->thread);
        else
            ::pthread_join(left->thread, nullptr);
        destroy(left);
    }
}
