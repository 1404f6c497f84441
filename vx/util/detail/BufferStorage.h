#pragma once

#include "vx/Exceptions.h"
#include "vxsys/Memory.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vx::util::detail {

/// The storage of the read-write buffers of both widths: `AnyUnit`s from the C runtime's allocator in steps of 16. Data and
/// length are atomic because a locked buffer returns them without its lock.
///
/// The first storage may be borrowed: it follows the buffer object in the same allocation, which is faster for short text.
/// A buffer that needs more moves to separate storage.
///
/// The capacity is what callers see. A storage that grows takes more memory than that, up to twice its size, so that a text
/// made of many pieces is moved a few times only.
template <class AnyUnit>
class BufferStorage {
public:
    using Unit = AnyUnit;
    static constexpr bool IS_WRITABLE = true;
    /// The most units that follow a buffer in its allocation. They stay unused once the text has moved.
    static constexpr int MOST_FOLLOWING = 128;

    BufferStorage() noexcept = default;
    /// Uses the memory after this object, at `place`, for `units` units, a number that `adjust` returned.
    BufferStorage(Unit* place, int units) noexcept;
    BufferStorage(const BufferStorage&) = delete;
    BufferStorage& operator=(const BufferStorage&) = delete;
    ~BufferStorage() { free(); }

    bool isBorrowed() const noexcept { return (m_capacity & IS_BORROWED) != 0; }
    /// Where borrowed memory begins. Separate memory may begin there too: some allocators put no header between blocks.
    Unit* following() const noexcept { return reinterpret_cast<Unit*>(const_cast<BufferStorage*>(this) + 1); }
    Unit* data() const noexcept { return m_data.load(std::memory_order_relaxed); }
    int capacity() const noexcept
    {
        const int stored = m_capacity & ~IS_BORROWED;
        return length() <= stored ? stored : raised(length());
    }
    int length() const noexcept { return m_length.load(std::memory_order_relaxed); }
    void setLength(int length) noexcept
    {
        if (this->length() >= m_capacity) [[unlikely]] // or equal, because of the flag; then nothing changes
            setCapacity(capacity());
        setGreaterLength(length);
    }
    /// The same for a length that is not below the old one.
    void setGreaterLength(int length) noexcept { m_length.store(length, std::memory_order_relaxed); }
    /// Uses `length` of the borrowed units, and sets the capacity to `capacity`.
    void begin(int length, int capacity) noexcept
    {
        setCapacity(adjust(capacity));
        setGreaterLength(length);
    }
    /// Whether the memory suffices. If it does, a length may be set that is above the capacity, and raises it.
    bool fits(std::int64_t units) const noexcept { return units <= m_room; }
    /// The units in use: a length beyond the capacity counts as the capacity.
    int held() const noexcept { return std::min(length(), capacity()); }

    /// `n` rounded up to a multiple of 16, in a width in which it cannot overflow.
    static constexpr std::int64_t adjust(int n) noexcept { return (std::int64_t {n} + 15) & ~std::int64_t {15}; }

    /// Takes new storage, of length 0.
    void alloc(int capacity);
    /// Throws std::bad_alloc, and then nothing has changed.
    void realloc(int capacity);
    void free() noexcept;
    /// Makes room for `minimum` units and returns where they begin.
    Unit* ensure(int minimum);
    /// Raises the capacity to `minimum` if the memory of the storage suffices. If not, returns false and changes nothing.
    bool ensureWithin(std::int64_t minimum) noexcept;
    /// Sets the length after writing. A negative one keeps the length.
    void endWriting(int length) noexcept;
    void freeExtra();
    /// Ends the capacity after the units in use, but not before `least` units, and frees the memory beyond it unless that is
    /// little or borrowed. If memory is exhausted, all stays.
    void releaseExtra(int least) noexcept;

    /// Copies capacity and units.
    void assign(const BufferStorage& other) { assign(other.data(), other.held(), other.capacity()); }
    void assign(const Unit* source, int length, int capacity);

private:
    /// The largest multiple of 16 that an `int` can hold.
    static constexpr std::int64_t LARGEST = 0x7FFFFFF0;
    /// A flag in a number that is a multiple of 16.
    static constexpr int IS_BORROWED = 1;

    void setData(Unit* data) noexcept { m_data.store(data, std::memory_order_relaxed); }
    void setCapacity(std::int64_t units) noexcept { m_capacity = static_cast<int>(units) | (m_capacity & IS_BORROWED); }
    /// The capacity for `units` units, within the memory.
    int raised(int units) const noexcept { return static_cast<int>(std::min<std::int64_t>(adjust(units), m_room)); }
    void resize(int capacity);
    /// Moves the units to separate memory for `units` units, which become the capacity. False when there is no memory.
    bool takeMemory(std::int64_t units) noexcept;

    std::atomic<Unit*> m_data {nullptr};
    int m_capacity = 0; ///< before a greater length raised it; with IS_BORROWED
    std::atomic<int> m_length {0};
    int m_room = 0; ///< the units that the memory holds
};

/// The storage of the read-only buffers of both widths: units of another owner.
template <class AnyUnit>
class BufferView {
public:
    using Unit = AnyUnit;
    static constexpr bool IS_WRITABLE = false;

    BufferView() noexcept = default;
    BufferView(const Unit* data, int length) noexcept;

    const Unit* data() const noexcept { return m_data; }
    int length() const noexcept { return m_length; }

    Unit* ensure(int) { throw ReadOnlyException(); }
    void endWriting(int) { throw ReadOnlyException(); }
    void freeExtra() noexcept { }

private:
    const Unit* m_data = nullptr;
    int m_length = 0;
};

template <class AnyUnit>
BufferStorage<AnyUnit>::BufferStorage(Unit* place, int units) noexcept
    : m_data(place)
    , m_capacity(units | IS_BORROWED)
    , m_room(units)
{
}

template <class AnyUnit>
void BufferStorage<AnyUnit>::alloc(int capacity)
{
    free();
    if (capacity > 0)
        resize(capacity);
}

template <class AnyUnit>
void BufferStorage<AnyUnit>::realloc(int capacity)
{
    if (capacity <= 0)
        return free();
    if (adjust(capacity) != this->capacity())
        resize(capacity);
}

template <class AnyUnit>
void BufferStorage<AnyUnit>::free() noexcept
{
    if (!isBorrowed())
        VXMemFree(data());
    setData(nullptr);
    m_capacity = 0;
    m_room = 0;
    setLength(0);
}

template <class AnyUnit>
AnyUnit* BufferStorage<AnyUnit>::ensure(int minimum)
{
    if (!ensureWithin(minimum))
        realloc(minimum);
    return data();
}

template <class AnyUnit>
bool BufferStorage<AnyUnit>::ensureWithin(std::int64_t minimum) noexcept
{
    if (!fits(minimum))
        return false;
    if (minimum > capacity())
        setCapacity(raised(static_cast<int>(minimum)));
    return true;
}

template <class AnyUnit>
void BufferStorage<AnyUnit>::endWriting(int length) noexcept
{
    if (length >= 0)
        setLength(length);
}

template <class AnyUnit>
void BufferStorage<AnyUnit>::freeExtra()
{
    realloc(length());
    releaseExtra(0);
}

template <class AnyUnit>
void BufferStorage<AnyUnit>::releaseExtra(int least) noexcept
{
    const std::int64_t units = adjust(std::max(length(), least));
    if (units == 0 || units > capacity())
        return;
    // To give back a small part is not worth its time.
    if (isBorrowed() || m_room - units <= units / 8)
        setCapacity(units);
    else
        takeMemory(units);
}

template <class AnyUnit>
void BufferStorage<AnyUnit>::assign(const Unit* source, int length, int capacity)
{
    alloc(std::max(length, capacity));
    if (source == nullptr || length < 1)
        return;
    std::memcpy(data(), source, static_cast<std::size_t>(length) * sizeof(Unit));
    setLength(length);
}

template <class AnyUnit>
void BufferStorage<AnyUnit>::resize(int capacity)
{
    const std::int64_t units = adjust(capacity);
    if (units > this->capacity() ? units <= m_room : isBorrowed())
        return setCapacity(units);
    if (units > LARGEST)
        throwBadAllocation();
    // A first storage and one that shrinks are exact. One that grows is likely to grow again.
    const std::int64_t more = m_room == 0 || units <= m_room ? units : std::min(std::int64_t {m_room} * 2, LARGEST);
    if (more > units && takeMemory(more))
        return setCapacity(units);
    if (!takeMemory(units))
        throwBadAllocation();
}

template <class AnyUnit>
bool BufferStorage<AnyUnit>::takeMemory(std::int64_t units) noexcept
{
    void* memory = VXMemRealloc(isBorrowed() ? nullptr : data(), static_cast<std::size_t>(units) * sizeof(Unit));
    if (memory == nullptr)
        return false;
    if (isBorrowed())
        std::memcpy(memory, data(), static_cast<std::size_t>(capacity()) * sizeof(Unit));
    setData(static_cast<Unit*>(memory));
    m_capacity = static_cast<int>(units);
    m_room = m_capacity; // no longer borrowed
    return true;
}

template <class AnyUnit>
BufferView<AnyUnit>::BufferView(const Unit* data, int length) noexcept
    : m_data(data)
    , m_length(length)
{
}

} // namespace vx::util::detail
