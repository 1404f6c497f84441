#pragma once

#include "vx/text/charset/CharToByteConverter.h"

namespace vx::text::charset {

/// Base of the encoders of UTF-16 and UTF-32. They write no byte order mark.
class VX_API CharToByteUTF : public CharToByteConverter {
public:
    ~CharToByteUTF() noexcept override;

    // CharToByteConverter
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

    /// Converts a unit between the byte order of the encoding and that of this machine.
    virtual char16_t convertChar(char16_t unit) = 0;

protected:
    CharToByteUTF() noexcept = default;

    /// Converts units by `convertChar`, without regard to surrogates. Returns units, not bytes.
    std::int32_t sameEncodingConvert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
        std::int32_t* dstPos, std::int32_t dstLen);
};

} // namespace vx::text::charset
