#pragma once

#include "vx/Reference.h"
#include "vx/io/ByteWindow.h"

namespace vx::io {

/// The order of the bytes of a number.
enum ENUM_VX_ENDIAN : std::int32_t {
    VX_ENDIAN_LITTLE = 0,
    VX_ENDIAN_BIG = 1,
    VX_ENDIAN_UNSUPPORTED = 2 ///< refused
};

/// Binary records: numbers and bytes, written to or read from a block of memory in a chosen byte order.
class VX_API ByteBuffer : public ByteWindow<ByteBuffer, signed char, ENUM_VX_ENDIAN, Reference> {
public:
    /// Allocates an uninitialised block.
    ByteBuffer(unsigned int capacity, ENUM_VX_ENDIAN order, bool readOnly);
    /// Both borrow the block; a buffer made by the second never writes to it.
    ByteBuffer(signed char* bytes, unsigned int size, ENUM_VX_ENDIAN order, bool readOnly) noexcept;
    ByteBuffer(const signed char* bytes, unsigned int size, ENUM_VX_ENDIAN order) noexcept;
    ByteBuffer(const ByteBuffer& other) noexcept;
    ByteBuffer& operator=(const ByteBuffer& other) noexcept;
    ~ByteBuffer() noexcept override;

    /// Throws UnsupportedOperationException for VX_ENDIAN_UNSUPPORTED.
    static ENUM_VX_ENDIAN acceptOrder(ENUM_VX_ENDIAN order);
};

} // namespace vx::io
