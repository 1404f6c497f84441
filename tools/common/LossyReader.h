#pragma once

#include <vx/Reference.h>
#include <vx/String.h>
#include <vx/io/InputStream.h>
#include <vx/io/Reader.h>
#include <vx/text/charset/ByteToCharConverter.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vxtools {

/// Decodes bytes, and replaces those that are invalid in the encoding by U+FFFD, where a decoder of the library throws.
class LossyDecoder {
public:
    /// Throws UnknownEncodingException.
    explicit LossyDecoder(const vx::String& encoding);

    /// Appends the text of `bytes` to `text` and returns the number of bytes decoded. An incomplete character at the
    /// end is not decoded, unless `isLast`.
    std::size_t decode(std::span<const signed char> bytes, bool isLast, std::u16string& text);

private:
    vx::Reference<vx::text::charset::ByteToCharConverter> m_decoder;
    std::int32_t m_unitSize; ///< bytes that one U+FFFD replaces
};

/// Decodes a stream with a LossyDecoder.
class LossyReader : public vx::io::Reader {
public:
    /// `blockSize`: bytes per read. Throws UnknownEncodingException.
    LossyReader(vx::io::InputStream* source, const vx::String& encoding, std::size_t blockSize);

    // Reader
    using Reader::read;
    std::int32_t read(char16_t* target, std::int32_t length) override;

private:
    void fill();

    vx::Reference<vx::io::InputStream> m_source;
    LossyDecoder m_decoder;
    std::vector<signed char> m_bytes;
    std::size_t m_byteCount = 0;
    bool m_isAtEnd = false;
    std::u16string m_text;
    std::size_t m_position = 0;
};

/// Replaces each lone half of a surrogate pair by U+FFFD.
void replaceLoneSurrogates(vx::String& text);

} // namespace vxtools
