#pragma once

#include "vx/Object.h"

#include <cstdint>

namespace vx::text::charset {

/// Encodes UTF-16 into bytes of one encoding. One stream and one thread at a time: a lead surrogate at the end of the input
/// is held until the next call.
class VX_API CharToByteConverter : public Object {
public:
    CharToByteConverter(const CharToByteConverter& other) noexcept;
    CharToByteConverter& operator=(const CharToByteConverter& other) noexcept;
    ~CharToByteConverter() noexcept override;

    /// A new encoder with reference count 0. A null `name` means the default encoding. Throws UnknownEncodingException
    /// with the name.
    static CharToByteConverter* getConverter(const char16_t* name);
    /// A new encoder with reference count 0 for the platform's default encoding, or for ASCII if that is unknown.
    static CharToByteConverter* getDefaultConverter();

    /// Converts whole characters from `src[*srcPos]` on and stores them from `dst[*dstPos]` on. `srcLen` and `dstLen`
    /// are end indices, and all of `dst` up to there may be overwritten. Stops if the source ends or the next character
    /// has no room. Both positions are advanced over what was converted; an exception leaves them at the start of the
    /// character that caused it. Returns the bytes stored.
    virtual std::int32_t convert(const char16_t* src, std::int32_t* srcPos, std::int32_t srcLen, signed char* dst,
        std::int32_t* dstPos, std::int32_t dstLen)
        = 0;
    /// Ends a conversion: stores what is still held, and returns the bytes stored. A held lead surrogate throws
    /// InvalidCharacterException and stays held.
    virtual std::int32_t flush(signed char* dst, std::int32_t* dstPos, std::int32_t dstLen) = 0;
    /// Drops a held lead surrogate.
    virtual void reset() = 0;
    /// The canonical name.
    virtual const char16_t* getEncodingName() = 0;
    /// Both are for the size of buffers.
    virtual int getMaxBytesPerChar() = 0;
    virtual int getMaxCharsPerByte() = 0;
    /// If true, a character without a mapping becomes the substitution bytes. If false, it throws
    /// UnmappableCharacterException.
    virtual bool getSubstitutionMode();
    virtual void setSubstitutionMode(bool mode);
    /// Copies at most `length` bytes and returns their number; with null `bytes`, returns how many there are.
    virtual int getSubstitutionBytes(signed char* bytes, int length);
    /// At most 7 bytes.
    virtual void setSubstitutionBytes(const signed char* bytes, int length);

protected:
    CharToByteConverter() noexcept = default;

    bool m_substitutionMode = true;
    signed char m_substitutionBytes[7] = {'?', 0};
    int m_substitutionLength = 1;
};

} // namespace vx::text::charset
