#pragma once

#include "legacy/CVXSmartPtr.h"
#include "vx/io/ByteWindow.h"

#include <cstdint>

/// Known as `CVXByteBuffer::ByteOrder`.
enum CVXByteOrder : std::int32_t {
    CVX_ORDER_LITTLE = 0,
    CVX_ORDER_BIG = 1,
    CVX_ORDER_NATIVE = 2 ///< becomes CVX_ORDER_LITTLE wherever it is given
};

/// The byte buffer of the older generation: `vx::io::ByteBuffer` with unsigned bytes. The two are strangers: neither is
/// taken for the other.
class VX_API CVXByteBuffer : public vx::io::ByteWindow<CVXByteBuffer, unsigned char, CVXByteOrder, CVXSmartPtr> {
public:
    using ByteOrder = CVXByteOrder;

    /// A block of its own, which is not cleared.
    CVXByteBuffer(unsigned int capacity, ByteOrder order, bool readOnly);
    /// Borrow the block; the second one never writes to it.
    CVXByteBuffer(unsigned char* bytes, unsigned int size, ByteOrder order, bool readOnly) noexcept;
    CVXByteBuffer(const unsigned char* bytes, unsigned int size, ByteOrder order) noexcept;
    CVXByteBuffer(const CVXByteBuffer& other) noexcept;
    CVXByteBuffer& operator=(const CVXByteBuffer& other) noexcept;
    ~CVXByteBuffer() noexcept override;

    static ByteOrder acceptOrder(ByteOrder order) noexcept
    {
        return order == CVX_ORDER_NATIVE ? CVX_ORDER_LITTLE : order;
    }
};
