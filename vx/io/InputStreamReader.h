#pragma once

#include "vx/Reference.h"
#include "vx/detail/RawArray.h"
#include "vx/io/InputStream.h"
#include "vx/io/Reader.h"
#include "vx/text/charset/ByteToCharConverter.h"

namespace vx::io {

/// Decodes a byte stream in some encoding.
///
/// Each byte of an incomplete character at the end of the stream gives U+FFFD. For malformed input the converter's
/// exception reaches the caller, now and in each later call. What the same call has decoded before the error is lost,
/// unless it already filled the caller's buffer.
///
/// Holds a reference to the source from construction to destruction, and does not read it again after its end. After
/// `close` every operation but `close` and `getPosition` throws IoException "stream closed".
class VX_API InputStreamReader : public Reader {
public:
    /// `size` of the buffer in bytes, at least 6 and what one character may take. A null `encoding` is the default
    /// encoding; an unknown one throws UnknownEncodingException.
    InputStreamReader(InputStream* source, const char16_t* encoding, std::int32_t size);
    InputStreamReader(const InputStreamReader&) = delete;
    InputStreamReader& operator=(const InputStreamReader&) = delete;

    // Reader
    using Reader::read;
    std::int32_t read(char16_t* target, std::int32_t length) override;
    /// An estimate from the available bytes, as if every character took the maximum number of bytes in the encoding.
    std::int32_t available() override;
    /// Each call closes the source, also a second one.
    void close() override;

    /// The encoding's canonical name.
    virtual const char16_t* getEncodingName();

    /// The substitution mode of the converter, at first true. With false, an incomplete last character also throws
    /// InvalidCharacterException.
    void setSubstitutionMode(bool mode);
    /// Bytes decoded so far. After a converter's exception, the position of the character that could not be decoded.
    std::int64_t getPosition() const { return m_bytesBefore + m_position; }

private:
    static constexpr std::int32_t MAX_UNITS_PER_CHAR = 4;

    void ensureOpen() const;
    void fillBuffer();
    std::int32_t takeHeld(char16_t* target, std::int32_t length);
    bool splitCharacter(char16_t* target, std::int32_t* done, std::int32_t length);

    Reference<InputStream> m_source;
    Reference<text::charset::ByteToCharConverter> m_converter; // null: closed
    std::int32_t m_bufferSize;
    vx::detail::RawArray<signed char> m_buffer;
    std::int32_t m_position = 0;
    std::int32_t m_end = 0;
    bool m_endOfStream = false;
    std::int64_t m_bytesBefore = 0; // the first one in the buffer
    /// Decoded units that did not fit in the buffer of the caller.
    char16_t m_held[MAX_UNITS_PER_CHAR];
    std::int32_t m_heldCount = 0;
};

} // namespace vx::io
