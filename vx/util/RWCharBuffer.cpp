#include "vx/util/RWCharBuffer.h"

#include <algorithm>
#include <limits>

namespace vx::util {

RWCharBuffer::RWCharBuffer(int capacity)
{
    allocBuffer(capacity);
}

RWCharBuffer::RWCharBuffer(const char16_t* data, int length, int capacity)
{
    m_storage.assign(data, length, capacity);
}

RWCharBuffer::RWCharBuffer(const RWCharBuffer& other)
    : AbstractCharBuffer()
{
    m_storage.assign(other.m_storage);
}

RWCharBuffer::RWCharBuffer(char16_t* place, int units) noexcept
    : m_storage(place, units)
{
}

RWCharBuffer& RWCharBuffer::operator=(const RWCharBuffer& other)
{
    if (this == &other)
        return *this;
    const int length = other.m_storage.held();
    char16_t* target = getWriteLock(other.m_storage.capacity());
    std::copy_n(other.m_storage.data(), length, target);
    releaseWriteLock(length);
    return *this;
}

RWCharBuffer::~RWCharBuffer() noexcept(false) = default;

int RWCharBuffer::getLength() const
{
    return m_storage.length();
}

const char16_t* RWCharBuffer::getData() const
{
    return m_storage.data();
}

const char16_t* RWCharBuffer::getReadLock() const
{
    return m_storage.data();
}

void RWCharBuffer::releaseReadLock() const { }

bool RWCharBuffer::isWritable() const
{
    return true;
}

char16_t* RWCharBuffer::getWriteLock(int minimumLength)
{
    return ensureCapacity(minimumLength);
}

char16_t* RWCharBuffer::ensureCapacity(int minimumLength)
{
    m_storage.ensure(minimumLength);
    return m_storage.data();
}

void RWCharBuffer::releaseWriteLock(int length)
{
    if (length >= 0)
        m_storage.setLength(length);
}

void RWCharBuffer::freeExtra()
{
    reallocBuffer(m_storage.length());
}

void RWCharBuffer::allocBuffer(int capacity)
{
    m_storage.alloc(capacity);
}

void RWCharBuffer::reallocBuffer(int capacity)
{
    m_storage.realloc(capacity);
}

void RWCharBuffer::freeBuffer()
{
    m_storage.free();
}

int RWCharBuffer::adjustCapacity(int n)
{
    return static_cast<int>(
        std::min<std::int64_t>(BufferStorage<char16_t>::adjust(n), std::numeric_limits<int>::max()));
}

} // namespace vx::util
