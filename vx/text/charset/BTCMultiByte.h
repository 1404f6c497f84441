#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/text/charset/ByteToCharConverter.h"
#include "vx/text/charset/IVXCharCodec.h"

namespace vx::text::charset {

/// Base of decoders with several bytes for a character. They call the hook `convertBytes`.
class VX_API BTCMultiByte : public ByteToCharConverter {
public:
    ~BTCMultiByte() noexcept override;

    // ByteToCharConverter
    std::int32_t convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    /// Stores a trailing surrogate that a derived class holds, and does not advance the position. Throws
    /// InvalidCharacterException if there is no room for it and one more unit.
    std::int32_t flush(char16_t* dst, std::int32_t* dstPos, std::int32_t dstLen) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

    /// Returns the code point of the first character, U+FFFD for a sequence that has none. `length` is the number of
    /// bytes available, and becomes the length of the sequence, or 0 if more bytes are needed. Any other number means
    /// all the bytes.
    virtual std::uint32_t convertBytes(const signed char* bytes, int& length) = 0;

protected:
    BTCMultiByte();

    char16_t m_trail = 0; ///< 0: none
    String m_name;
    std::int32_t m_maxBytesPerChar = -1;
    std::int32_t m_maxCharsPerByte = -1;
};

/// The decoder of an encoding from a component.
class VX_API BTCCom : public BTCMultiByte {
public:
    /// Keeps a reference on `codec`. Throws ResultException if it does not return its name or its sizes.
    explicit BTCCom(IVXCharCodec* codec);
    ~BTCCom() noexcept override;

    // BTCMultiByte
    std::uint32_t convertBytes(const signed char* bytes, int& length) override;

private:
    Reference<IVXCharCodec> m_codec;
};

} // namespace vx::text::charset
