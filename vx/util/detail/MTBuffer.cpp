#include "vx/util/detail/MTBuffer.h"

#include "vx/sync/ScopedLock.h"
#include "vx/util/MTByteBuffer.h"
#include "vx/util/MTCharBuffer.h"

namespace vx::util {

namespace detail {

template <class RW, class Unit>
MTBuffer<RW, Unit>::MTBuffer(int capacity)
    : RW(capacity)
{
}

template <class RW, class Unit>
MTBuffer<RW, Unit>::MTBuffer(const Unit* data, int length, int capacity)
    : RW(data, length, capacity)
{
}

template <class RW, class Unit>
MTBuffer<RW, Unit>::MTBuffer(const MTBuffer& other)
    : RW(other)
{
}

template <class RW, class Unit>
MTBuffer<RW, Unit>& MTBuffer<RW, Unit>::operator=(const MTBuffer& other)
{
    RW::operator=(other);
    return *this;
}

template <class RW, class Unit>
MTBuffer<RW, Unit>::~MTBuffer() noexcept(false) = default;

template <class RW, class Unit>
const Unit* MTBuffer<RW, Unit>::getReadLock() const
{
    m_lock.waitShared();
    return this->getData();
}

template <class RW, class Unit>
void MTBuffer<RW, Unit>::releaseReadLock() const
{
    m_lock.signalShared();
}

template <class RW, class Unit>
Unit* MTBuffer<RW, Unit>::getWriteLock(int minimumLength)
{
    m_lock.wait();
    try {
        return this->ensureCapacity(minimumLength);
    } catch (...) {
        m_lock.signal();
        throw;
    }
}

template <class RW, class Unit>
void MTBuffer<RW, Unit>::releaseWriteLock(int length)
{
    RW::releaseWriteLock(length);
    m_lock.signal();
}

template <class RW, class Unit>
void MTBuffer<RW, Unit>::freeExtra()
{
    const sync::ScopedLock lock(m_lock);
    this->reallocBuffer(this->getLength());
}

template class MTBuffer<RWByteBuffer, signed char>;
template class MTBuffer<RWCharBuffer, char16_t>;

} // namespace detail

MTByteBuffer::~MTByteBuffer() noexcept(false) = default;
MTCharBuffer::~MTCharBuffer() noexcept(false) = default;

} // namespace vx::util
