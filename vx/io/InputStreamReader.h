#pragma once

#include "vx/Reference.h"
#include "vx/detail/RawArray.h"
#include "vx/io/InputStream.h"
#include "vx/io/Reader.h"
#include "vx/text/charset/ByteToCharConverter.h"

namespace vx::io {

/// Text out of a byte stream in some encoding.
///
/// Bytes at the end of the stream that make no whole character give U+FFFD each. Malformed input passes through as the
/// converter's exception, and each later call meets it again. What the same call has decoded before the fault is lost,
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
    /// An estimate: the bytes at hand, as if every character took the most bytes that the encoding needs for one.
    std::int32_t available() override;
    /// Each call closes the source, a second one too.
    void close() override;

    /// The encoding's canonical name.
    virtual const char16_t* getEncodingName();

    /// As the converter's; it starts true. With false, a last character that is cut throws InvalidCharacterException too.
    void setSubstitutionMode(bool mode);
    /// Bytes decoded so far. After a converter's exception this is where the character begins that it could not decode.
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
    /// What was decoded of a character, and of what comes with it, beyond the room that the caller had.
    char16_t m_held[MAX_UNITS_PER_CHAR];
    std::int32_t m_heldCount = 0;
};

} // namespace vx::io
