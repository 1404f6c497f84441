#pragma once

#include "vx/Reference.h"

#include <atomic>

namespace vx::detail {

/// An object that the library creates at its first use and releases at its end. Threads that create it at the same time all
/// get the same one. A failure to create it is thrown, and the next caller tries again. This is not std::call_once because an
/// exception from that leaves other threads waiting under ThreadSanitizer.
template <class T>
class MadeOnce {
public:
    constexpr MadeOnce() noexcept = default;
    MadeOnce(const MadeOnce&) = delete;
    MadeOnce& operator=(const MadeOnce&) = delete;
    ~MadeOnce() { Reference<T>().attach(m_object.exchange(nullptr)); }

    /// Adds no reference.
    T* get();

private:
    std::atomic<T*> m_object {nullptr};
};

template <class T>
inline T* MadeOnce<T>::get()
{
    if (T* object = m_object.load(std::memory_order_acquire))
        return object;
    Reference<T> mine(new T);
    T* object = nullptr;
    if (!m_object.compare_exchange_strong(object, mine.get(), std::memory_order_acq_rel, std::memory_order_acquire))
        return object;
    return mine.detach();
}

} // namespace vx::detail
