#pragma once

#include "vx/text/charset/ByteToCharConverter.h"

namespace vx::text::charset {

/// Decodes AMP-7, see CTBAMP7; "&APOS;", "&QUOT;", lower-case digits, and leading zeros up to five digits are accepted
/// as well.
///
/// An ampersand that starts no valid form is unmappable, and the bytes after it are read as text. U+FFFD as a number is
/// unmappable too. The number of a surrogate throws InvalidCharacterException. A form that is incomplete at the end of
/// the source stays unread.
class VX_API BTCAMP7 : public ByteToCharConverter {
public:
    BTCAMP7() noexcept = default;
    ~BTCAMP7() noexcept override;

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
