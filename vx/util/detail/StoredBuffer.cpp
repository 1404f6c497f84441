#include "vx/util/detail/StoredBuffer.h"

#include "vx/util/ROByteBuffer.h"
#include "vx/util/ROCharBuffer.h"
#include "vx/util/RWByteBuffer.h"
#include "vx/util/RWCharBuffer.h"

#include <algorithm>
#include <limits>

namespace vx::util {

namespace detail {

template <class Abstract, class Storage>
StoredBuffer<Abstract, Storage>::~StoredBuffer() noexcept(false) = default;

template <class Abstract, class Storage>
int StoredBuffer<Abstract, Storage>::getLength() const
{
    return m_storage.length();
}

template <class Abstract, class Storage>
auto StoredBuffer<Abstract, Storage>::getData() const -> const Unit*
{
    return m_storage.data();
}

template <class Abstract, class Storage>
auto StoredBuffer<Abstract, Storage>::getReadLock() const -> const Unit*
{
    return m_storage.data();
}

template <class Abstract, class Storage>
void StoredBuffer<Abstract, Storage>::releaseReadLock() const
{
}

template <class Abstract, class Storage>
bool StoredBuffer<Abstract, Storage>::isWritable() const
{
    return Storage::IS_WRITABLE;
}

template <class Abstract, class Storage>
auto StoredBuffer<Abstract, Storage>::getWriteLock(int minimumLength) -> Unit*
{
    return ensureCapacity(minimumLength);
}

template <class Abstract, class Storage>
auto StoredBuffer<Abstract, Storage>::ensureCapacity(int minimumLength) -> Unit*
{
    return m_storage.ensure(minimumLength);
}

template <class Abstract, class Storage>
void StoredBuffer<Abstract, Storage>::releaseWriteLock(int length)
{
    m_storage.endWriting(length);
}

template <class Abstract, class Storage>
void StoredBuffer<Abstract, Storage>::freeExtra()
{
    m_storage.freeExtra();
}

template <class Abstract, class Unit>
ROBuffer<Abstract, Unit>::ROBuffer(const Unit* data, int length, int) noexcept
    : StoredBuffer<Abstract, BufferView<Unit>>(data, length)
{
}

template <class Abstract, class Unit>
ROBuffer<Abstract, Unit>::~ROBuffer() noexcept(false) = default;

template <class Abstract, class Unit>
RWBuffer<Abstract, Unit>::RWBuffer(int capacity)
{
    allocBuffer(capacity);
}

template <class Abstract, class Unit>
RWBuffer<Abstract, Unit>::RWBuffer(const Unit* data, int length, int capacity)
{
    this->m_storage.assign(data, length, capacity);
}

template <class Abstract, class Unit>
RWBuffer<Abstract, Unit>::RWBuffer(const RWBuffer& other)
    : StoredBuffer<Abstract, BufferStorage<Unit>>()
{
    this->m_storage.assign(other.m_storage);
}

template <class Abstract, class Unit>
RWBuffer<Abstract, Unit>& RWBuffer<Abstract, Unit>::operator=(const RWBuffer& other)
{
    if (this == &other)
        return *this;
    const int length = other.m_storage.held();
    Unit* target = this->getWriteLock(other.m_storage.capacity());
    std::copy_n(other.m_storage.data(), length, target);
    this->releaseWriteLock(length);
    return *this;
}

template <class Abstract, class Unit>
RWBuffer<Abstract, Unit>::~RWBuffer() noexcept(false) = default;

template <class Abstract, class Unit>
void RWBuffer<Abstract, Unit>::allocBuffer(int capacity)
{
    this->m_storage.alloc(capacity);
}

template <class Abstract, class Unit>
void RWBuffer<Abstract, Unit>::reallocBuffer(int capacity)
{
    this->m_storage.realloc(capacity);
}

template <class Abstract, class Unit>
void RWBuffer<Abstract, Unit>::freeBuffer()
{
    this->m_storage.free();
}

template <class Abstract, class Unit>
int RWBuffer<Abstract, Unit>::adjustCapacity(int n)
{
    return static_cast<int>(std::min<std::int64_t>(BufferStorage<Unit>::adjust(n), std::numeric_limits<int>::max()));
}

template class StoredBuffer<AbstractByteBuffer, BufferView<signed char>>;
template class StoredBuffer<AbstractCharBuffer, BufferView<char16_t>>;
template class StoredBuffer<AbstractByteBuffer, BufferStorage<signed char>>;
template class StoredBuffer<AbstractCharBuffer, BufferStorage<char16_t>>;
template class ROBuffer<AbstractByteBuffer, signed char>;
template class ROBuffer<AbstractCharBuffer, char16_t>;
template class RWBuffer<AbstractByteBuffer, signed char>;
template class RWBuffer<AbstractCharBuffer, char16_t>;

} // namespace detail

ROByteBuffer::~ROByteBuffer() noexcept(false) = default;
ROCharBuffer::~ROCharBuffer() noexcept(false) = default;
RWByteBuffer::~RWByteBuffer() noexcept(false) = default;
RWCharBuffer::~RWCharBuffer() noexcept(false) = default;

} // namespace vx::util
