#pragma once

#include "vx/text/charset/ByteToCharConverter.h"

namespace vx::text::charset {

/// Base of decoders with one byte for a character. They call the hook `convertByte`.
class VX_API BTCSingleByte : public ByteToCharConverter {
public:
    ~BTCSingleByte() noexcept override;

    // ByteToCharConverter
    std::int32_t convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    std::int32_t flush(char16_t* dst, std::int32_t* dstPos, std::int32_t dstLen) override;
    void reset() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

    /// U+FFFD means that the byte has no character.
    virtual char16_t convertByte(signed char byte) = 0;

protected:
    BTCSingleByte() noexcept = default;
};

/// ASCII: bytes from 0x80 have no character.
class VX_API BTCASCII : public BTCSingleByte {
public:
    BTCASCII() noexcept = default;
    ~BTCASCII() noexcept override;

    // BTCSingleByte
    std::int32_t convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    const char16_t* getEncodingName() override;
    char16_t convertByte(signed char byte) override;
};

/// ISO 8859-1: every byte is the character of its value.
class VX_API BTCISO8859_1 : public BTCSingleByte {
public:
    BTCISO8859_1() noexcept = default;
    ~BTCISO8859_1() noexcept override;

    // BTCSingleByte
    std::int32_t convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    const char16_t* getEncodingName() override;
    char16_t convertByte(signed char byte) override;
};

/// A code page that is defined by a table.
class VX_API BTCSingleByteTable : public BTCSingleByte {
public:
    /// Both pointers are stored, but not owned. `table` has 256 entries.
    BTCSingleByteTable(const char16_t* name, const char16_t* table) noexcept;
    ~BTCSingleByteTable() noexcept override;

    // BTCSingleByte
    std::int32_t convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    const char16_t* getEncodingName() override;
    char16_t convertByte(signed char byte) override;

private:
    const char16_t* m_name;
    const char16_t* m_table;
};

/// Code page 437 of the published mapping; bytes below 0x20 are the control characters.
class VX_API BTCCP437 : public BTCSingleByteTable {
public:
    BTCCP437() noexcept;
    ~BTCCP437() noexcept override;
};

/// Code page 1252 of the published mapping; 0x81, 0x8D, 0x8F, 0x90 and 0x9D have no character.
class VX_API BTCCP1252 : public BTCSingleByteTable {
public:
    BTCCP1252() noexcept;
    ~BTCCP1252() noexcept override;
};

} // namespace vx::text::charset
