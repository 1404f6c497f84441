#pragma once

#include "vxsys/Memory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace vx::util {

/// What the read-write buffers of both widths own: `Unit`s from the C runtime's allocator in steps of 16.
template <class Unit>
class BufferStorage {
public:
    BufferStorage() noexcept = default;
    BufferStorage(const BufferStorage&) = delete;
    BufferStorage& operator=(const BufferStorage&) = delete;
    ~BufferStorage() { free(); }

    Unit* data() const noexcept { return m_data; }
    int capacity() const noexcept { return m_capacity; }
    int length() const noexcept { return m_length; }
    void setLength(int length) noexcept { m_length = length; }

    /// `n` rounded up to the step, in a width in which it cannot overflow.
    static constexpr std::int64_t adjust(int n) noexcept { return (std::int64_t {n} + 15) & ~std::int64_t {15}; }

    /// Takes new storage, of length 0.
    void alloc(int capacity)
    {
        free();
        if (capacity > 0)
            resize(capacity);
    }

    /// Throws std::bad_alloc, and everything stands as it was.
    void realloc(int capacity)
    {
        if (capacity <= 0)
            return free();
        if (adjust(capacity) != m_capacity)
            resize(capacity);
    }

    void free() noexcept
    {
        VXMemFree(m_data);
        m_data = nullptr;
        m_capacity = 0;
        m_length = 0;
    }

    void ensure(int minimum)
    {
        if (m_capacity < minimum)
            realloc(minimum);
    }

    void assign(const Unit* data, int length, int capacity)
    {
        alloc(std::max(length, capacity));
        if (length < 1)
            return;
        std::memcpy(m_data, data, static_cast<std::size_t>(length) * sizeof(Unit));
        m_length = length;
    }

private:
    static constexpr std::int64_t LARGEST = 0x7FFFFFFF;

    void resize(int capacity)
    {
        const std::int64_t units = adjust(capacity);
        void* memory
            = units <= LARGEST ? VXMemRealloc(m_data, static_cast<std::size_t>(units) * sizeof(Unit)) : nullptr;
        if (memory == nullptr)
            throw std::bad_alloc();
        m_data = static_cast<Unit*>(memory);
        m_capacity = static_cast<int>(units);
    }

    Unit* m_data = nullptr;
    int m_capacity = 0;
    int m_length = 0;
};

} // namespace vx::util
