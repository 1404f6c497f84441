#include "legacy/CVXByteBuffer.h"

CVXByteBuffer::CVXByteBuffer(unsigned int capacity, ByteOrder order, bool readOnly)
    : ByteWindow(capacity, acceptOrder(order), readOnly)
{
}

CVXByteBuffer::CVXByteBuffer(unsigned char* bytes, unsigned int size, ByteOrder order, bool readOnly) noexcept
    : ByteWindow(bytes, size, acceptOrder(order), readOnly)
{
}

CVXByteBuffer::CVXByteBuffer(const unsigned char* bytes, unsigned int size, ByteOrder order) noexcept
    : ByteWindow(const_cast<unsigned char*>(bytes), size, acceptOrder(order), true)
{
}

CVXByteBuffer::CVXByteBuffer(const CVXByteBuffer& other) noexcept = default;
CVXByteBuffer& CVXByteBuffer::operator=(const CVXByteBuffer& other) noexcept = default;
CVXByteBuffer::~CVXByteBuffer() noexcept = default;
