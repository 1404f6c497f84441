#pragma once

#include <atomic>
#include <pthread.h>

namespace vxsys::detail {

/// Registers handlers of a fork once. Not by a static variable with an initialiser: a child process that is forked while
/// another thread is there would wait for that thread for ever.
inline void handleForks(std::atomic<bool>& isDone, void (*before)(), void (*inParent)(), void (*inChild)()) noexcept
{
    if (!isDone.load(std::memory_order_relaxed) && !isDone.exchange(true))
        ::pthread_atfork(before, inParent, inChild);
}

} // namespace vxsys::detail
