#include "vx/StrBuf1.h"

#include "vx/Exceptions.h"
#include "vxsys/Memory.h"

namespace vx {

StrBuf1::StrBuf1(char16_t* data, std::uint32_t capacity)
    : m_data(data)
{
    if (data != nullptr)
        setCapacityValue(capacity);
}

StrBuf1::~StrBuf1()
{
    if ((m_flags & HEAP_FREE) != 0)
        VXMemFree(m_data);
    else if ((m_flags & HEAP_DELETE) != 0)
        vxsys::deallocate(m_data);
}

std::uint32_t StrBuf1::AddRef()
{
    return ++m_count;
}

std::uint32_t StrBuf1::Release()
{
    const std::uint32_t count = --m_count;
    if (count == 0)
        delete this;
    return count;
}

std::uint32_t StrBuf1::isPrivatelyHeld(short noSelfCount) const
{
    if ((m_flags & ALWAYS_PRIVATE) != 0)
        return getCapacityValue();
    const std::uint32_t holders = isStaticInstance() && noSelfCount == 0 ? 2 : 1;
    return m_count <= holders ? getCapacityValue() : 0;
}

std::uint32_t StrBuf1::getBufCapacity() const
{
    return getCapacityValue();
}

void* StrBuf1::operator new(std::size_t bytes)
{
    return vxsys::allocate(bytes);
}

void StrBuf1::operator delete(void* memory) noexcept
{
    vxsys::deallocate(memory);
}

void* StrBuf1::operator new(std::size_t bytes, std::align_val_t alignment)
{
    return vxsys::allocate(bytes, alignment);
}

void StrBuf1::operator delete(void* memory, std::align_val_t) noexcept
{
    vxsys::deallocate(memory);
}

void StrBuf1::initStaticInstance(short alwaysPrivate)
{
    AddRef();
    m_flags |= STATIC_INSTANCE;
    if (alwaysPrivate != 0)
        m_flags |= ALWAYS_PRIVATE;
}

void StrBuf1::setCapacityValue(std::uint32_t capacity)
{
    if (capacity > MAX_CAPACITY)
        throw OutOfMemoryException();
    m_flags = (m_flags & ~MAX_CAPACITY) | capacity;
}

bool StrBuf1::ownsData() const noexcept
{
    static_assert(sizeof(StrBuf1Wrap) == sizeof(StrBuf1), "the data follow either in one allocation");
    return getHeapBits() != 0 || m_data == static_cast<const void*>(this + 1);
}

StrBuf1Wrap::~StrBuf1Wrap() = default;

template class StrBuf1Fixed<128>;

} // namespace vx
