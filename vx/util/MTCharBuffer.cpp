#include "vx/util/MTCharBuffer.h"

#include "vx/sync/ScopedLock.h"

namespace vx::util {

MTCharBuffer::MTCharBuffer(int capacity)
    : RWCharBuffer(capacity)
{
}

MTCharBuffer::MTCharBuffer(const char16_t* data, int length, int capacity)
    : RWCharBuffer(data, length, capacity)
{
}

MTCharBuffer::MTCharBuffer(const MTCharBuffer& other)
    : RWCharBuffer(other)
{
}

MTCharBuffer& MTCharBuffer::operator=(const MTCharBuffer& other)
{
    RWCharBuffer::operator=(other);
    return *this;
}

MTCharBuffer::~MTCharBuffer() noexcept(false) = default;

const char16_t* MTCharBuffer::getReadLock() const
{
    m_lock.waitShared();
    return getData();
}

void MTCharBuffer::releaseReadLock() const
{
    m_lock.signalShared();
}

char16_t* MTCharBuffer::getWriteLock(int minimumLength)
{
    m_lock.wait();
    try {
        return ensureCapacity(minimumLength);
    } catch (...) {
        m_lock.signal();
        throw;
    }
}

void MTCharBuffer::releaseWriteLock(int length)
{
    RWCharBuffer::releaseWriteLock(length);
    m_lock.signal();
}

void MTCharBuffer::freeExtra()
{
    const sync::ScopedLock lock(m_lock);
    reallocBuffer(getLength());
}

} // namespace vx::util
