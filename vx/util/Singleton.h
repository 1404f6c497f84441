#pragma once

#include "vx/Exceptions.h"
#include "vx/sync/ScopedLock.h"

#include <atomic>

namespace vx::util {

/// One shared `T`. The first `getInstance` creates it under the lock that `lock` points to, `freeInstance` destroys it.
/// An instance that exists is returned without the lock. While `*lock` is null, creating or destroying one throws
/// IllegalStateException.
///
/// Each binary that instantiates this template has its own instance. For one instance in the whole process, the library
/// that owns `T` declares the instantiation `extern` and exports it, as `ClassManager` does.
template <class T, sync::LockObject** lock>
class Singleton : public T {
public:
    static T* getInstance();
    /// Does nothing if there is no instance.
    static void freeInstance();

    Singleton(const Singleton&) = delete;
    Singleton& operator=(const Singleton&) = delete;

private:
    Singleton() = default;
    ~Singleton() = default;

    static sync::LockObject& existingLock();

    static std::atomic<Singleton*> s_instance;
};

// None of these is inline: an `extern` instantiation is then the only one.

template <class T, sync::LockObject** lock>
T* Singleton<T, lock>::getInstance()
{
    if (Singleton* instance = s_instance.load(std::memory_order_acquire))
        return instance;
    sync::LockObject& creation = existingLock();
    const sync::ScopedLock guard(creation);
    if (s_instance.load(std::memory_order_relaxed) == nullptr)
        s_instance.store(new Singleton, std::memory_order_release);
    return s_instance.load(std::memory_order_relaxed);
}

template <class T, sync::LockObject** lock>
void Singleton<T, lock>::freeInstance()
{
    if (s_instance.load(std::memory_order_acquire) == nullptr)
        return;
    sync::LockObject& destruction = existingLock();
    const sync::ScopedLock guard(destruction);
    delete s_instance.exchange(nullptr);
}

template <class T, sync::LockObject** lock>
sync::LockObject& Singleton<T, lock>::existingLock()
{
    if (*lock == nullptr)
        throw IllegalStateException();
    return **lock;
}

template <class T, sync::LockObject** lock>
constinit std::atomic<Singleton<T, lock>*> Singleton<T, lock>::s_instance {nullptr};

} // namespace vx::util
