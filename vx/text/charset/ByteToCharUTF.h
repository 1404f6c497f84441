#pragma once

#include "vx/text/charset/ByteToCharConverter.h"

namespace vx::text::charset {

/// Base of the decoders of UTF-16 and UTF-32. A byte order mark has no special meaning.
class VX_API ByteToCharUTF : public ByteToCharConverter {
public:
    ~ByteToCharUTF() noexcept override;

    // ByteToCharConverter
    std::int32_t flush(char16_t* dst, std::int32_t* dstPos, std::int32_t dstLen) override;
    void reset() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

    /// Converts a unit between the byte order of the encoding and that of this machine.
    virtual char16_t convertChar(char16_t unit) = 0;

protected:
    ByteToCharUTF() noexcept = default;

    /// Converts units by `convertChar`, without regard to surrogates. An odd last byte stays unread.
    std::int32_t sameEncodingConvert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
        std::int32_t* dstPos, std::int32_t dstLen);
};

} // namespace vx::text::charset
