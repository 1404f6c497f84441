#pragma once

#include "vxsys/Memory.h"

#include <cstddef>
#include <type_traits>
#include <utility>

namespace vx {

/// Owns an array that `vxsys::allocate` returned, and frees it. Copying moves the array out of the source, which
/// therefore must not be constant.
template <class T>
class OwningArray {
    static_assert(std::is_trivially_destructible_v<T>, "only the memory is freed");

public:
    constexpr OwningArray() noexcept = default;
    /// Takes the array over; null is none.
    explicit OwningArray(T* array) noexcept
        : m_array(array)
    {
    }
    OwningArray(OwningArray& other) noexcept
        : m_array(other.release())
    {
    }
    OwningArray(OwningArray&& other) noexcept
        : m_array(other.release())
    {
    }
    ~OwningArray() { vxsys::deallocate(m_array); }

    OwningArray& operator=(OwningArray& other) noexcept
    {
        reset(other.release());
        return *this;
    }
    OwningArray& operator=(OwningArray&& other) noexcept { return *this = other; }

    T* get() const noexcept { return m_array; }
    T& operator[](std::size_t index) const noexcept { return m_array[index]; }

    /// Returns the array, which the caller now owns, and holds null.
    [[nodiscard]] T* release() noexcept { return std::exchange(m_array, nullptr); }
    void reset(T* array = nullptr) noexcept { vxsys::deallocate(std::exchange(m_array, array)); }

private:
    T* m_array = nullptr;
};

} // namespace vx
