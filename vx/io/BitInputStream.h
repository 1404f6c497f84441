#pragma once

#include "vx/io/FilterInputStream.h"

#include <cstdint>

namespace vx::io {

/// Bits, the most significant one of each byte first. Bytes are read off the bit stream where it stands; the operations
/// that are forwarded know nothing of the bits that wait. A number whose bytes the wrapped stream fails to bring keeps its
/// bits here, and may be read again.
class VX_API BitInputStream : public FilterInputStream {
public:
    explicit BitInputStream(InputStream* source);

    // InputStream
    using FilterInputStream::read;
    /// A `length` below 1 gives -1.
    std::int32_t read(signed char* target, std::int32_t length) override;
    int read() override;

    /// The next `bits` bits as a number, of which the last 32 count; 0 for `bits` below 1. -1 where the data ends before,
    /// and for 32 bits that are all set.
    virtual int read(int bits);
    /// 0, 1, or -1 at the end.
    virtual int readBit();

private:
    std::uint32_t m_current = 0; ///< its low `m_bitsLeft` bits come next
    int m_bitsLeft = 0;
};

} // namespace vx::io
