#pragma once

#include "vx/text/charset/CharToByteConverter.h"

namespace vx::text::charset {

/// AMP-7: writes any text in printable ASCII and line ends. Other characters, including control characters, become
/// "&_", the code point in hexadecimal, and ";". The ampersand becomes "&AMP;".
///
/// Code points from U+FFFFF on cannot be written. A leading surrogate without a trailing one throws
/// InvalidCharacterException, but as the last unit of the source it stays unread. A lone trailing one is encoded.
class VX_API CTBAMP7 : public CharToByteConverter {
public:
    CTBAMP7() noexcept = default;
    ~CTBAMP7() noexcept override;

    // CharToByteConverter
    std::int32_t convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    std::int32_t flush(signed char* dst, std::int32_t* dstPos, std::int32_t dstLen) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;
};

} // namespace vx::text::charset
