#include "vx/util/ROByteBuffer.h"

#include "vx/Exceptions.h"
#include "vx/Result.h"

namespace vx::util {

ROByteBuffer::ROByteBuffer(const signed char* data, int length, int) noexcept
    : m_data(data)
    , m_length(length)
{
}

ROByteBuffer::ROByteBuffer(const ROByteBuffer& other) noexcept = default;

ROByteBuffer& ROByteBuffer::operator=(const ROByteBuffer& other) noexcept = default;

ROByteBuffer::~ROByteBuffer() noexcept(false) = default;

int ROByteBuffer::getLength() const
{
    return m_length;
}

const signed char* ROByteBuffer::getData() const
{
    return m_data;
}

const signed char* ROByteBuffer::getReadLock() const
{
    return m_data;
}

void ROByteBuffer::releaseReadLock() const { }

bool ROByteBuffer::isWritable() const
{
    return false;
}

signed char* ROByteBuffer::getWriteLock(int)
{
    throw ReadOnlyException();
}

signed char* ROByteBuffer::ensureCapacity(int)
{
    throw ReadOnlyException();
}

void ROByteBuffer::releaseWriteLock(int)
{
    throw ReadOnlyException();
}

void ROByteBuffer::freeExtra() { }

std::int32_t ROByteBuffer::GetWriteLock(int, signed char** out)
{
    if (out == nullptr)
        return RESULT_POINTER;
    *out = nullptr;
    return RESULT_NOT_IMPLEMENTED;
}

std::int32_t ROByteBuffer::EnsureCapacity(int minimumLength, signed char** out)
{
    return GetWriteLock(minimumLength, out);
}

std::int32_t ROByteBuffer::ReleaseWriteLock(int)
{
    return RESULT_NOT_IMPLEMENTED;
}

} // namespace vx::util
