#pragma once

#include "legacy/CVXSmartPtr.h"
#include "vx/io/ByteWindow.h"

#include <cstdint>

/// Known as `CVXByteBuffer::ByteOrder`.
enum CVXByteOrder : std::int32_t {
    CVX_ORDER_LITTLE = 0,
    CVX_ORDER_BIG = 1,
    CVX_ORDER_NATIVE = 2 ///< is taken as CVX_ORDER_LITTLE
};

/// The byte buffer of the older generation: `vx::io::ByteBuffer` with unsigned bytes. The two classes are not related:
/// neither compares equal to the other.
class VX_API CVXByteBuffer : public vx::io::ByteWindow<CVXByteBuffer, unsigned char, CVXByteOrder, CVXSmartPtr> {
public:
    using ByteOrder = CVXByteOrder;

    /// Owns a new block, which is not cleared.
    CVXByteBuffer(unsigned int capacity, ByteOrder order, bool readOnly);
    /// These borrow the block. The second one never writes to it.
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
