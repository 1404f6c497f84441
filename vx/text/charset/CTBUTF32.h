#pragma once

#include "vx/text/charset/CharToByteUTF.h"

namespace vx::text::charset {

/// UTF-32 bytes in either order. A lone trailing surrogate is written as its own value; a leading one without a
/// trailing one throws InvalidCharacterException and stays held until `reset`.
class VX_API CTBUTF32 : public CharToByteUTF {
public:
    ~CTBUTF32() noexcept override;

    // CharToByteConverter
    std::int32_t convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    std::int32_t flush(signed char* dst, std::int32_t* dstPos, std::int32_t dstLen) override;
    void reset() override;

    /// Converts a value from the byte order of this machine to that of the encoding.
    virtual std::uint32_t convertUTF32(std::uint32_t value) = 0;

protected:
    CTBUTF32() noexcept = default;

private:
    char16_t m_lead = 0;
};

/// The most significant byte comes first.
class VX_API CTBUTF32BE : public CTBUTF32 {
public:
    CTBUTF32BE() noexcept;
    ~CTBUTF32BE() noexcept override;

    // CTBUTF32
    const char16_t* getEncodingName() override;
    char16_t convertChar(char16_t unit) override;
    std::uint32_t convertUTF32(std::uint32_t value) override;
};

/// The least significant byte comes first.
class VX_API CTBUTF32LE : public CTBUTF32 {
public:
    CTBUTF32LE() noexcept;
    ~CTBUTF32LE() noexcept override;

    // CTBUTF32
    const char16_t* getEncodingName() override;
    char16_t convertChar(char16_t unit) override;
    std::uint32_t convertUTF32(std::uint32_t value) override;
};

} // namespace vx::text::charset
