#pragma once

#include "vx/text/charset/CharToByteConverter.h"

namespace vx::text::charset {

/// UTF-8, less strict than RFC 3629. A lone trailing surrogate is encoded like any other unit, as three bytes; a leading one without a
/// trailing one throws InvalidCharacterException and stays held until `reset`.
class VX_API CTBUTF8 : public CharToByteConverter {
public:
    CTBUTF8() noexcept = default;
    ~CTBUTF8() noexcept override;

    // CharToByteConverter
    std::int32_t convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    std::int32_t flush(signed char* dst, std::int32_t* dstPos, std::int32_t dstLen) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

private:
    char16_t m_lead = 0;
};

} // namespace vx::text::charset
