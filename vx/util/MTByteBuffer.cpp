#include "vx/util/MTByteBuffer.h"

#include "vx/sync/ScopedLock.h"

namespace vx::util {

MTByteBuffer::MTByteBuffer(int capacity)
    : RWByteBuffer(capacity)
{
}

MTByteBuffer::MTByteBuffer(const signed char* data, int length, int capacity)
    : RWByteBuffer(data, length, capacity)
{
}

MTByteBuffer::MTByteBuffer(const MTByteBuffer& other)
    : RWByteBuffer(other)
{
}

MTByteBuffer& MTByteBuffer::operator=(const MTByteBuffer& other)
{
    RWByteBuffer::operator=(other);
    return *this;
}

MTByteBuffer::~MTByteBuffer() noexcept(false) = default;

const signed char* MTByteBuffer::getReadLock() const
{
    m_lock.waitShared();
    return getData();
}

void MTByteBuffer::releaseReadLock() const
{
    m_lock.signalShared();
}

signed char* MTByteBuffer::getWriteLock(int minimumLength)
{
    m_lock.wait();
    try {
        return ensureCapacity(minimumLength);
    } catch (...) {
        m_lock.signal();
        throw;
    }
}

void MTByteBuffer::releaseWriteLock(int length)
{
    RWByteBuffer::releaseWriteLock(length);
    m_lock.signal();
}

void MTByteBuffer::freeExtra()
{
    const sync::ScopedLock lock(m_lock);
    reallocBuffer(getLength());
}

} // namespace vx::util
