#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/text/charset/CharToByteConverter.h"
#include "vx/text/charset/IVXCharCodec.h"

namespace vx::text::charset {

/// Base of encoders with several bytes for a character. They call the hook `convertChar`.
class VX_API CTBMultiByte : public CharToByteConverter {
public:
    ~CTBMultiByte() noexcept override;

    // CharToByteConverter
    std::int32_t convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
        std::int32_t* dstPos, std::int32_t dstLen) override;
    std::int32_t flush(signed char* dst, std::int32_t* dstPos, std::int32_t dstLen) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

    /// Stores the bytes of a character, at most `capacity`, and returns their number, or less than 1 if it has none. It
    /// is also called for surrogates, for a lead before its trail is known.
    virtual int convertChar(std::uint32_t codePoint, signed char* bytes, int capacity) = 0;

protected:
    CTBMultiByte();

    String m_name;
    std::int32_t m_maxBytesPerChar = -1;
    std::int32_t m_maxCharsPerByte = -1;
    char16_t m_lead = 0; ///< 0: none
};

/// The encoder of an encoding from a component.
class VX_API CTBCom : public CTBMultiByte {
public:
    /// Keeps a reference on `codec`. Throws ResultException if it does not return its name or its sizes.
    explicit CTBCom(IVXCharCodec* codec);
    ~CTBCom() noexcept override;

    // CTBMultiByte
    int convertChar(std::uint32_t codePoint, signed char* bytes, int capacity) override;

private:
    Reference<IVXCharCodec> m_codec;
};

} // namespace vx::text::charset
