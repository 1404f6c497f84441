#pragma once

#include "vx/String.h"
#include "vx/io/FilterOutputStream.h"

#include <cstdint>

namespace vx::io {

/// Encodes bytes as text in an alphabet of 32 characters, 5 bits each: the layout of Base32 (RFC 4648) without padding.
/// Five bytes make eight characters, each a write of one byte to the wrapped stream. `close` does not flush. If the
/// wrapped stream fails at a character, the byte may be written again.
class VX_API AlphaNumOutputStream : public FilterOutputStream {
public:
    /// `alphabet` has 32 different characters up to U+00FF, else ResultException; null is "A" to "Z" and "2" to "9"
    /// without "I" and "O".
    explicit AlphaNumOutputStream(OutputStream* sink, const char16_t* alphabet = nullptr);

    // OutputStream
    using FilterOutputStream::write;
    void write(const signed char* bytes, std::int32_t length) override;
    void write(signed char byte) override;
    /// Fills a pending character with zero bits. The next byte starts a new group.
    void flush() override;

private:
    String m_alphabet;
    std::uint8_t m_previous = 0;
    int m_step = 0;
    bool m_isFirstOut = false; ///< the first character of a byte is written, and the sink failed at the second
};

} // namespace vx::io
