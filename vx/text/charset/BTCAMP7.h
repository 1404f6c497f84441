#pragma once

#include "vx/text/charset/ByteToCharConverter.h"

namespace vx::text::charset {

/// Decodes AMP-7, see CTBAMP7; "&APOS;", "&QUOT;", lower-case digits and leading zeros up to five digits are taken as well.
///
/// What starts no valid form is unmappable, one byte of it: what follows is read as text. So is U+FFFD as a number. A
/// number among the surrogates throws InvalidCharacterException. A form cut by the end of the source waits for its rest.
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
