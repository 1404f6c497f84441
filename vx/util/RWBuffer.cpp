#include "vx/util/RWBuffer.h"

#include "vx/util/RWByteBuffer.h"
#include "vx/util/RWCharBuffer.h"

#include <algorithm>
#include <limits>

namespace vx::util {

template <class Abstract, class Unit>
RWBuffer<Abstract, Unit>::RWBuffer(int capacity)
{
    allocBuffer(capacity);
}

template <class Abstract, class Unit>
RWBuffer<Abstract, Unit>::RWBuffer(const Unit* data, int length, int capacity)
{
    m_storage.assign(data, length, capacity);
}

template <class Abstract, class Unit>
RWBuffer<Abstract, Unit>::RWBuffer(const RWBuffer& other)
    : Abstract()
{
    m_storage.assign(other.m_storage);
}

template <class Abstract, class Unit>
RWBuffer<Abstract, Unit>::RWBuffer(Placed, Unit* place, int units) noexcept
    : m_storage(place, units)
{
}

template <class Abstract, class Unit>
RWBuffer<Abstract, Unit>& RWBuffer<Abstract, Unit>::operator=(const RWBuffer& other)
{
    if (this == &other)
        return *this;
    const int length = other.m_storage.held();
    Unit* target = getWriteLock(other.m_storage.capacity());
    std::copy_n(other.m_storage.data(), length, target);
    releaseWriteLock(length);
    return *this;
}

template <class Abstract, class Unit>
RWBuffer<Abstract, Unit>::~RWBuffer() noexcept(false) = default;

template <class Abstract, class Unit>
int RWBuffer<Abstract, Unit>::getLength() const
{
    return m_storage.length();
}

template <class Abstract, class Unit>
const Unit* RWBuffer<Abstract, Unit>::getData() const
{
    return m_storage.data();
}

template <class Abstract, class Unit>
const Unit* RWBuffer<Abstract, Unit>::getReadLock() const
{
    return m_storage.data();
}

template <class Abstract, class Unit>
void RWBuffer<Abstract, Unit>::releaseReadLock() const
{
}

template <class Abstract, class Unit>
bool RWBuffer<Abstract, Unit>::isWritable() const
{
    return true;
}

template <class Abstract, class Unit>
Unit* RWBuffer<Abstract, Unit>::getWriteLock(int minimumLength)
{
    return ensureCapacity(minimumLength);
}

template <class Abstract, class Unit>
Unit* RWBuffer<Abstract, Unit>::ensureCapacity(int minimumLength)
{
    m_storage.ensure(minimumLength);
    return m_storage.data();
}

template <class Abstract, class Unit>
void RWBuffer<Abstract, Unit>::releaseWriteLock(int length)
{
    if (length >= 0)
        m_storage.setLength(length);
}

template <class Abstract, class Unit>
void RWBuffer<Abstract, Unit>::freeExtra()
{
    reallocBuffer(m_storage.length());
}

template <class Abstract, class Unit>
void RWBuffer<Abstract, Unit>::allocBuffer(int capacity)
{
    m_storage.alloc(capacity);
}

template <class Abstract, class Unit>
void RWBuffer<Abstract, Unit>::reallocBuffer(int capacity)
{
    m_storage.realloc(capacity);
}

template <class Abstract, class Unit>
void RWBuffer<Abstract, Unit>::freeBuffer()
{
    m_storage.free();
}

template <class Abstract, class Unit>
int RWBuffer<Abstract, Unit>::adjustCapacity(int n)
{
    return static_cast<int>(std::min<std::int64_t>(BufferStorage<Unit>::adjust(n), std::numeric_limits<int>::max()));
}

template class RWBuffer<AbstractByteBuffer, signed char>;
template class RWBuffer<AbstractCharBuffer, char16_t>;

RWByteBuffer::~RWByteBuffer() noexcept(false) = default;

RWCharBuffer::~RWCharBuffer() noexcept(false) = default;

} // namespace vx::util
