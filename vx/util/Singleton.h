#pragma once

#include "vx/Exceptions.h"
#include "vx/sync/ScopedLock.h"

#include <atomic>

namespace vx::util {

/// The one `T` of the process, created at the first `getInstance` under the lock that `lock` leads to. Without that lock
/// only an instance that exists can be reached: to create or free one then throws IllegalStateException.
template <class T, sync::LockObject** lock>
class Singleton : public T {
public:
    static T* getInstance()
    {
        if (Singleton* instance = s_instance.load(std::memory_order_acquire))
            return instance;
        sync::LockObject& creation = existingLock();
        const sync::ScopedLock guard(creation);
        if (s_instance.load(std::memory_order_relaxed) == nullptr)
            s_instance.store(new Singleton, std::memory_order_release);
        return s_instance.load(std::memory_order_relaxed);
    }

    /// Does nothing where there is no instance.
    static void freeInstance()
    {
        if (s_instance.load(std::memory_order_acquire) == nullptr)
            return;
        sync::LockObject& destruction = existingLock();
        const sync::ScopedLock guard(destruction);
        delete s_instance.exchange(nullptr);
    }

private:
    Singleton() = default;
    Singleton(const Singleton&) = delete;
    Singleton& operator=(const Singleton&) = delete;
    ~Singleton() = default;

    static sync::LockObject& existingLock()
    {
        if (*lock == nullptr)
            throw IllegalStateException();
        return **lock;
    }

    static inline constinit std::atomic<Singleton*> s_instance {nullptr};
};

} // namespace vx::util
