#pragma once

#include "vx/io/FilterInputStream.h"

#include <array>
#include <cstdint>

namespace vx::io {

/// Decodes what AlphaNumOutputStream writes: 5 bits a character, in the layout of Base32 (RFC 4648) without padding.
///
/// A text whose length is not a multiple of 8 gives one byte more than was encoded, because the coding does not store
/// the number of bytes. Marks are those of the wrapped stream and do not include pending bits.
class VX_API AlphaNumInputStream : public FilterInputStream {
public:
    /// `alphabet` has 32 different characters up to U+00FF, else ResultException; null is "A" to "Z" and "2" to "9"
    /// without "I" and "O".
    explicit AlphaNumInputStream(InputStream* source, const char16_t* alphabet = nullptr);

    // InputStream
    using FilterInputStream::read;
    /// A character that is not in the alphabet throws InvalidCharacterException. A `length` below 1 gives -1.
    std::int32_t read(signed char* target, std::int32_t length) override;
    int read() override;
    std::int32_t skip(std::int32_t count) override;
    /// Computed from the characters available in the wrapped stream.
    std::int32_t available() override;

private:
    std::array<std::int8_t, 256> m_values; ///< of each byte as a character, -1 for none
    std::uint8_t m_partial = 0;
    std::uint8_t m_step = 0;
};

} // namespace vx::io
