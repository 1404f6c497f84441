#pragma once

#include "vx/io/FilterOutputStream.h"

#include <concepts>
#include <cstdint>

namespace vx::io {

/// Bits, the most significant one of each byte first. Bytes are written at the current bit position. Bits that do not
/// fill a byte are pending until `flush`; `close` writes nothing. If the wrapped stream fails, the write may be tried
/// again: either none of its bits were taken, or, after its first byte, the same write as the next call writes the
/// rest.
class VX_API BitOutputStream : public FilterOutputStream {
public:
    explicit BitOutputStream(OutputStream* sink);

    // OutputStream
    using FilterOutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override;
    void write(signed char byte) override;
    /// Fills a pending byte with zero bits.
    void flush() override;

    /// The low `bits` bits of `value`. Throws ResultException unless `bits` is from 1 to 32, RangeErrorException for a
    /// value that does not fit.
    virtual void write(std::uint32_t value, int bits);
    virtual void writeBit(bool bit);

    /// For other integer types and for literals, since a literal 0 could also be a pointer. A value that needs more
    /// than 32 bits does not fit.
    template <std::integral Number>
    void write(Number value, int bits);

private:
    void writeWide(std::uint64_t value, int bits);

    std::uint8_t m_byte = 0;
    int m_bits = 0;

    // The last write, if it failed after a part of its bits was taken. Nothing has been written since.
    std::uint32_t m_openValue = 0;
    int m_openBits = 0;
    int m_openTaken = 0;
};

template <std::integral Number>
inline void BitOutputStream::write(Number value, int bits)
{
    if constexpr (sizeof value > sizeof(std::uint32_t))
        writeWide(static_cast<std::uint64_t>(value), bits);
    else
        write(static_cast<std::uint32_t>(value), bits);
}

} // namespace vx::io
