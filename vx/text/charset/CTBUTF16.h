#pragma once

#include "vx/text/charset/CharToByteUTF.h"

namespace vx::text::charset {

/// UTF-16 bytes in either order. Lone surrogates pass unchanged, and the encoder holds nothing between calls. `convert`
/// returns units, not bytes.
class VX_API CTBUTF16 : public CharToByteUTF {
public:
    ~CTBUTF16() noexcept override;

    // CharToByteConverter
    std::int32_t convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    std::int32_t flush(signed char* dst, std::int32_t* dstPos, std::int32_t dstLen) override;
    void reset() override;

    /// Converts a unit from the byte order of this machine to that of the encoding.
    virtual std::uint16_t convertUTF16(std::uint16_t value) = 0;

protected:
    CTBUTF16() noexcept = default;
};

/// The most significant byte comes first.
class VX_API CTBUTF16BE : public CTBUTF16 {
public:
    CTBUTF16BE() noexcept;
    ~CTBUTF16BE() noexcept override;

    // CTBUTF16
    const char16_t* getEncodingName() override;
    char16_t convertChar(char16_t unit) override;
    std::uint16_t convertUTF16(std::uint16_t value) override;
};

/// The least significant byte comes first.
class VX_API CTBUTF16LE : public CTBUTF16 {
public:
    CTBUTF16LE() noexcept;
    ~CTBUTF16LE() noexcept override;

    // CTBUTF16
    const char16_t* getEncodingName() override;
    char16_t convertChar(char16_t unit) override;
    std::uint16_t convertUTF16(std::uint16_t value) override;
};

} // namespace vx::text::charset
