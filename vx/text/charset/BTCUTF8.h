#pragma once

#include "vx/text/charset/ByteToCharConverter.h"

namespace vx::text::charset {

/// UTF-8, less strict than RFC 3629. There is no byte order mark: U+FEFF is an ordinary character. A byte that begins no well-formed
/// sequence becomes one U+FFFD, in either substitution mode. Overlong forms of three and four bytes are accepted with
/// the value that they encode. The value of a surrogate throws InvalidCharacterException; one above U+10FFFF is
/// unmappable.
class VX_API BTCUTF8 : public ByteToCharConverter {
public:
    BTCUTF8() noexcept = default;
    ~BTCUTF8() noexcept override;

    // ByteToCharConverter
    std::int32_t convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    std::int32_t flush(char16_t* dst, std::int32_t* dstPos, std::int32_t dstLen) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;
};

} // namespace vx::text::charset
