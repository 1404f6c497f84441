#include "vx/util/ROCharBuffer.h"

#include "vx/Exceptions.h"
#include "vx/Result.h"

namespace vx::util {

ROCharBuffer::ROCharBuffer(const char16_t* data, int length, int) noexcept
    : m_data(data)
    , m_length(length)
{
}

ROCharBuffer::ROCharBuffer(const ROCharBuffer& other) noexcept = default;

ROCharBuffer& ROCharBuffer::operator=(const ROCharBuffer& other) noexcept = default;

ROCharBuffer::~ROCharBuffer() noexcept(false) = default;

int ROCharBuffer::getLength() const
{
    return m_length;
}

const char16_t* ROCharBuffer::getData() const
{
    return m_data;
}

const char16_t* ROCharBuffer::getReadLock() const
{
    return m_data;
}

void ROCharBuffer::releaseReadLock() const { }

bool ROCharBuffer::isWritable() const
{
    return false;
}

char16_t* ROCharBuffer::getWriteLock(int)
{
    throw ReadOnlyException();
}

char16_t* ROCharBuffer::ensureCapacity(int)
{
    throw ReadOnlyException();
}

void ROCharBuffer::releaseWriteLock(int)
{
    throw ReadOnlyException();
}

void ROCharBuffer::freeExtra() { }

std::int32_t ROCharBuffer::GetWriteLock(int, char16_t** out)
{
    if (out == nullptr)
        return RESULT_POINTER;
    *out = nullptr;
    return RESULT_NOT_IMPLEMENTED;
}

std::int32_t ROCharBuffer::EnsureCapacity(int minimumLength, char16_t** out)
{
    return GetWriteLock(minimumLength, out);
}

std::int32_t ROCharBuffer::ReleaseWriteLock(int)
{
    return RESULT_NOT_IMPLEMENTED;
}

} // namespace vx::util
