#pragma once

#include "vx/Object.h"

#include <cstdint>

namespace vx::text::charset {

/// Decodes bytes of one encoding into UTF-16. One stream and one thread at a time. A decoder keeps nothing between
/// calls.
class VX_API ByteToCharConverter : public Object {
public:
    ByteToCharConverter(const ByteToCharConverter& other) noexcept;
    ByteToCharConverter& operator=(const ByteToCharConverter& other) noexcept;
    ~ByteToCharConverter() noexcept override;

    /// A new decoder with reference count 0. A null `name` means the default encoding. Throws UnknownEncodingException
    /// with the name.
    static ByteToCharConverter* getConverter(const char16_t* name);
    /// A new decoder with reference count 0 for the platform's default encoding, or for ASCII if that is unknown.
    static ByteToCharConverter* getDefaultConverter();

    /// Converts whole characters from `src[*srcPos]` on and stores them from `dst[*dstPos]` on. `srcLen` and `dstLen`
    /// are end indices, and all of `dst` up to there may be overwritten. Stops if the source ends, even inside a
    /// character, or if the next character has no room. Both positions are advanced over what was converted; an
    /// exception leaves them at the start of the character that caused it. Returns the units stored.
    virtual std::int32_t convert(const signed char* src, std::int32_t* srcPos, std::int32_t srcLen, char16_t* dst,
        std::int32_t* dstPos, std::int32_t dstLen)
        = 0;
    /// Ends a conversion: stores what is still held, and returns the units stored.
    virtual std::int32_t flush(char16_t* dst, std::int32_t* dstPos, std::int32_t dstLen) = 0;
    /// Drops what is held, to begin a new stream.
    virtual void reset() = 0;
    /// The canonical name.
    virtual const char16_t* getEncodingName() = 0;
    /// Both are for the size of buffers.
    virtual int getMaxBytesPerChar() = 0;
    virtual int getMaxCharsPerByte() = 0;
    /// If true, a character without a mapping becomes the substitution characters. If false, it throws
    /// UnmappableCharacterException.
    virtual bool getSubstitutionMode();
    virtual void setSubstitutionMode(bool mode);
    /// Copies at most `length` units and returns their number; with null `chars`, returns how many there are.
    virtual int getSubstitutionChars(char16_t* chars, int length);
    /// At most 3 units.
    virtual void setSubstitutionChars(const char16_t* chars, int length);

protected:
    ByteToCharConverter() noexcept = default;

    bool m_substitutionMode = true;
    char16_t m_substitutionChars[3] = {u'\uFFFD'};
    int m_substitutionLength = 1;
};

} // namespace vx::text::charset
