#pragma once

#include "vx/io/FilterInputStream.h"

#include <cstdint>

namespace vx::io {

/// Bits, the most significant one of each byte first. Bytes are read from the current bit position; operations that are
/// forwarded ignore pending bits. If the wrapped stream fails, the bits read so far are kept, and the number may be
/// read again.
class VX_API BitInputStream : public FilterInputStream {
public:
    explicit BitInputStream(InputStream* source);

    // InputStream
    using FilterInputStream::read;
    /// A `length` below 1 gives -1.
    std::int32_t read(signed char* target, std::int32_t length) override;
    int read() override;

    /// The next `bits` bits as a number, truncated to the last 32; 0 for `bits` below 1. -1 if the data ends before,
    /// and also for 32 bits that are all set.
    virtual int read(int bits);
    /// 0, 1, or -1 at the end.
    virtual int readBit();

private:
    std::uint32_t m_current = 0; ///< its low `m_bitsLeft` bits come next
    int m_bitsLeft = 0;
};

} // namespace vx::io
