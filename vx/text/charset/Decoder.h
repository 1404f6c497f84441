#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/text/charset/ByteToCharConverter.h"

#include <string_view>
#include <vector>

namespace vx::text::charset {

/// Decodes bytes that come in pieces of any size, also if a piece ends inside a character. For those who have no stream:
/// `io::InputStreamReader` does the same for one. One thread at a time.
///
/// @code
/// text::charset::Decoder decoder(u"UTF-8");
/// String text = decoder.decode("Gr\xC3"); // as it comes from a socket, say
/// text += decoder.decode("\xBC\xC3\x9F");
/// text += decoder.finish();
/// assert(text == u"Grüß");
/// @endcode
class VX_API Decoder {
public:
    /// Throws UnknownEncodingException with the name.
    explicit Decoder(const String& encoding);
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    ~Decoder();

    /// The characters that are complete with this piece. Throws what the converter throws for malformed input: the text
    /// before it is lost with the exception, and the next piece begins a new text.
    String decode(std::string_view bytes);
    /// Ends the text. Each byte of an incomplete character gives U+FFFD, or throws InvalidCharacterException without the
    /// substitution mode. The next piece begins a new text.
    String finish();

    /// At first true, see ByteToCharConverter.
    void setSubstitutionMode(bool mode);

private:
    const Reference<ByteToCharConverter> m_converter;
    std::vector<signed char> m_pending; ///< the beginning of a character
};

} // namespace vx::text::charset
