#pragma once

#include "vx/text/charset/ByteToCharUTF.h"

namespace vx::text::charset {

/// UTF-16 bytes in either order. Lone surrogates pass unchanged.
class VX_API BTCUTF16 : public ByteToCharUTF {
public:
    ~BTCUTF16() noexcept override;

    // ByteToCharConverter
    std::int32_t convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;

    /// Converts a unit between the byte order of the encoding and that of this machine.
    virtual std::uint16_t convertUTF16(std::uint16_t value) = 0;

protected:
    BTCUTF16() noexcept = default;
};

/// The most significant byte comes first.
class VX_API BTCUTF16BE : public BTCUTF16 {
public:
    BTCUTF16BE() noexcept = default;
    ~BTCUTF16BE() noexcept override;

    // BTCUTF16
    const char16_t* getEncodingName() override;
    char16_t convertChar(char16_t unit) override;
    std::uint16_t convertUTF16(std::uint16_t value) override;
};

/// The least significant byte comes first.
class VX_API BTCUTF16LE : public BTCUTF16 {
public:
    BTCUTF16LE() noexcept = default;
    ~BTCUTF16LE() noexcept override;

    // BTCUTF16
    const char16_t* getEncodingName() override;
    char16_t convertChar(char16_t unit) override;
    std::uint16_t convertUTF16(std::uint16_t value) override;
};

} // namespace vx::text::charset
