#include "vx/io/ByteBuffer.h"

namespace vx::io {

ByteBuffer::ByteBuffer(unsigned int capacity, ENUM_VX_ENDIAN order, bool readOnly)
    : ByteWindow(capacity, order, readOnly)
{
}

ByteBuffer::ByteBuffer(signed char* bytes, unsigned int size, ENUM_VX_ENDIAN order, bool readOnly) noexcept
    : ByteWindow(bytes, size, order, readOnly)
{
}

ByteBuffer::ByteBuffer(const signed char* bytes, unsigned int size, ENUM_VX_ENDIAN order) noexcept
    : ByteWindow(const_cast<signed char*>(bytes), size, order, true)
{
}

ByteBuffer::ByteBuffer(const ByteBuffer& other) noexcept = default;
ByteBuffer& ByteBuffer::operator=(const ByteBuffer& other) noexcept = default;
ByteBuffer::~ByteBuffer() noexcept = default;

ENUM_VX_ENDIAN ByteBuffer::acceptOrder(ENUM_VX_ENDIAN order)
{
    if (order == VX_ENDIAN_UNSUPPORTED)
        throw UnsupportedOperationException();
    return order;
}

} // namespace vx::io
