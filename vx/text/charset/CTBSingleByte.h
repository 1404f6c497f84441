#pragma once

#include "vx/text/charset/CharToByteConverter.h"

namespace vx::text::charset {

/// Base of encoders with one byte for a character. They call the hook `convertChar`. A supplementary character has no
/// byte; a lone surrogate throws InvalidCharacterException.
class VX_API CTBSingleByte : public CharToByteConverter {
public:
    ~CTBSingleByte() noexcept override;

    // CharToByteConverter
    std::int32_t convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    std::int32_t flush(signed char* dst, std::int32_t* dstPos, std::int32_t dstLen) override;
    void reset() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

    /// 0 means that the character has no byte, except for U+0000.
    virtual signed char convertChar(char16_t unit) = 0;

protected:
    CTBSingleByte() noexcept = default;

    char16_t m_lead = 0; ///< the held lead surrogate, 0 for none
};

/// ASCII: characters from U+0080 have no byte.
class VX_API CTBASCII : public CTBSingleByte {
public:
    CTBASCII() noexcept = default;
    ~CTBASCII() noexcept override;

    // CTBSingleByte
    std::int32_t convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    const char16_t* getEncodingName() override;
    signed char convertChar(char16_t unit) override;
};

/// ISO 8859-1: characters from U+0100 have no byte.
class VX_API CTBISO8859_1 : public CTBSingleByte {
public:
    CTBISO8859_1() noexcept = default;
    ~CTBISO8859_1() noexcept override;

    // CTBSingleByte
    std::int32_t convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    const char16_t* getEncodingName() override;
    signed char convertChar(char16_t unit) override;
};

/// A code page that is defined by a table.
class VX_API CTBSingleByteTable : public CTBSingleByte {
public:
    /// All pointers are stored, but not owned. `pageIndex` has 256 entries: for each high byte, the offset of its page
    /// of 256 bytes in `pages`.
    CTBSingleByteTable(const char16_t* name, const int* pageIndex, const unsigned char* pages) noexcept;
    ~CTBSingleByteTable() noexcept override;

    // CTBSingleByte
    std::int32_t convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    const char16_t* getEncodingName() override;
    signed char convertChar(char16_t unit) override;

private:
    const char16_t* m_name;
    const int* m_pageIndex;
    const unsigned char* m_pages;
};

/// The inverse of BTCCP437.
class VX_API CTBCP437 : public CTBSingleByteTable {
public:
    CTBCP437() noexcept;
    ~CTBCP437() noexcept override;
};

/// The inverse of BTCCP1252.
class VX_API CTBCP1252 : public CTBSingleByteTable {
public:
    CTBCP1252() noexcept;
    ~CTBCP1252() noexcept override;
};

} // namespace vx::text::charset
