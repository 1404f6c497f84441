#include "vx/util/ROBuffer.h"

#include "vx/Exceptions.h"
#include "vx/util/ROByteBuffer.h"
#include "vx/util/ROCharBuffer.h"

namespace vx::util {

template <class Abstract, class Unit>
ROBuffer<Abstract, Unit>::ROBuffer(const Unit* data, int length, int) noexcept
    : m_data(data)
    , m_length(length)
{
}

template <class Abstract, class Unit>
ROBuffer<Abstract, Unit>::~ROBuffer() noexcept(false) = default;

template <class Abstract, class Unit>
int ROBuffer<Abstract, Unit>::getLength() const
{
    return m_length;
}

template <class Abstract, class Unit>
const Unit* ROBuffer<Abstract, Unit>::getData() const
{
    return m_data;
}

template <class Abstract, class Unit>
const Unit* ROBuffer<Abstract, Unit>::getReadLock() const
{
    return m_data;
}

template <class Abstract, class Unit>
void ROBuffer<Abstract, Unit>::releaseReadLock() const
{
}

template <class Abstract, class Unit>
bool ROBuffer<Abstract, Unit>::isWritable() const
{
    return false;
}

template <class Abstract, class Unit>
Unit* ROBuffer<Abstract, Unit>::getWriteLock(int)
{
    throw ReadOnlyException();
}

template <class Abstract, class Unit>
Unit* ROBuffer<Abstract, Unit>::ensureCapacity(int)
{
    throw ReadOnlyException();
}

template <class Abstract, class Unit>
void ROBuffer<Abstract, Unit>::releaseWriteLock(int)
{
    throw ReadOnlyException();
}

template <class Abstract, class Unit>
void ROBuffer<Abstract, Unit>::freeExtra()
{
}

template class ROBuffer<AbstractByteBuffer, signed char>;
template class ROBuffer<AbstractCharBuffer, char16_t>;

ROByteBuffer::~ROByteBuffer() noexcept(false) = default;

ROCharBuffer::~ROCharBuffer() noexcept(false) = default;

} // namespace vx::util
