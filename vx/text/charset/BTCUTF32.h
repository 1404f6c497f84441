#pragma once

#include "vx/text/charset/ByteToCharUTF.h"

namespace vx::text::charset {

/// UTF-32 bytes in either order. The value of a surrogate throws InvalidCharacterException; one above U+10FFFF is
/// unmappable.
class VX_API BTCUTF32 : public ByteToCharUTF {
public:
    ~BTCUTF32() noexcept override;

    // ByteToCharConverter
    std::int32_t convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;

    /// Converts a value from the byte order of the encoding to that of this machine.
    virtual std::uint32_t convertUTF32(std::uint32_t value) = 0;

protected:
    BTCUTF32() noexcept = default;
};

/// The most significant byte comes first.
class VX_API BTCUTF32BE : public BTCUTF32 {
public:
    BTCUTF32BE() noexcept = default;
    ~BTCUTF32BE() noexcept override;

    // BTCUTF32
    const char16_t* getEncodingName() override;
    char16_t convertChar(char16_t unit) override;
    std::uint32_t convertUTF32(std::uint32_t value) override;
};

/// The least significant byte comes first.
class VX_API BTCUTF32LE : public BTCUTF32 {
public:
    BTCUTF32LE() noexcept = default;
    ~BTCUTF32LE() noexcept override;

    // BTCUTF32
    const char16_t* getEncodingName() override;
    char16_t convertChar(char16_t unit) override;
    std::uint32_t convertUTF32(std::uint32_t value) override;
};

} // namespace vx::text::charset
