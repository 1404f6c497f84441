#include "vx/util/RWByteBuffer.h"

#include <algorithm>
#include <limits>

namespace vx::util {

RWByteBuffer::RWByteBuffer(int capacity)
{
    allocBuffer(capacity);
}

RWByteBuffer::RWByteBuffer(const signed char* data, int length, int capacity)
{
    m_storage.assign(data, length, capacity);
}

RWByteBuffer::RWByteBuffer(const RWByteBuffer& other)
    : AbstractByteBuffer()
{
    m_storage.assign(other.m_storage);
}

RWByteBuffer& RWByteBuffer::operator=(const RWByteBuffer& other)
{
    if (this == &other)
        return *this;
    const int length = other.m_storage.held();
    signed char* target = getWriteLock(other.m_storage.capacity());
    std::copy_n(other.m_storage.data(), length, target);
    releaseWriteLock(length);
    return *this;
}

RWByteBuffer::~RWByteBuffer() noexcept(false) = default;

int RWByteBuffer::getLength() const
{
    return m_storage.length();
}

const signed char* RWByteBuffer::getData() const
{
    return m_storage.data();
}

const signed char* RWByteBuffer::getReadLock() const
{
    return m_storage.data();
}

void RWByteBuffer::releaseReadLock() const { }

bool RWByteBuffer::isWritable() const
{
    return true;
}

signed char* RWByteBuffer::getWriteLock(int minimumLength)
{
    return ensureCapacity(minimumLength);
}

signed char* RWByteBuffer::ensureCapacity(int minimumLength)
{
    m_storage.ensure(minimumLength);
    return m_storage.data();
}

void RWByteBuffer::releaseWriteLock(int length)
{
    if (length >= 0)
        m_storage.setLength(length);
}

void RWByteBuffer::freeExtra()
{
    reallocBuffer(m_storage.length());
}

void RWByteBuffer::allocBuffer(int capacity)
{
    m_storage.alloc(capacity);
}

void RWByteBuffer::reallocBuffer(int capacity)
{
    m_storage.realloc(capacity);
}

void RWByteBuffer::freeBuffer()
{
    m_storage.free();
}

int RWByteBuffer::adjustCapacity(int n)
{
    return static_cast<int>(
        std::min<std::int64_t>(BufferStorage<signed char>::adjust(n), std::numeric_limits<int>::max()));
}

} // namespace vx::util
