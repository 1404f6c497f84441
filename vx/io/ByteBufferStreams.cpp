#include "vx/io/ByteBufferStreams.h"

namespace vx::io {

namespace {

Reference<ByteBuffer> orEmpty(ByteBuffer* buffer)
{
    return buffer != nullptr ? buffer : new ByteBuffer(0U, VX_ENDIAN_LITTLE, false);
}

} // namespace

ByteBufferInputStream::ByteBufferInputStream(ByteBuffer* buffer)
    : m_buffer(orEmpty(buffer))
{
}

std::int32_t ByteBufferInputStream::read(signed char* target, std::int32_t length)
{
    if (m_buffer->getPosition() >= m_buffer->getLimit())
        return -1;
    if (length < 1)
        return 0;
    return static_cast<std::int32_t>(m_buffer->get(target, static_cast<unsigned int>(length)));
}

ByteBufferOutputStream::ByteBufferOutputStream(ByteBuffer* buffer)
    : m_buffer(orEmpty(buffer))
{
}

void ByteBufferOutputStream::write(const signed char* bytes, std::int32_t length)
{
    if (length > 0 && m_buffer->put(bytes, static_cast<unsigned int>(length)) < static_cast<unsigned int>(length))
        m_overflowed = 1;
}

} // namespace vx::io
