#pragma once

#include "vx/Reference.h"
#include "vx/String.h"
#include "vx/text/charset/CharToByteConverter.h"

#include <string>
#include <string_view>

namespace vx::text::charset {

/// Encodes text that comes in pieces of any size, also if a piece ends between the halves of a surrogate pair. For those
/// who have no stream: `io::OutputStreamWriter` does the same for one. One thread at a time.
class VX_API Encoder {
public:
    /// Throws UnknownEncodingException with the name.
    explicit Encoder(const String& encoding);
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;
    ~Encoder();

    /// The bytes of this piece, without those of a leading surrogate at its end. Throws what the converter throws: the
    /// bytes before it are lost with the exception, and the next piece begins a new text.
    std::string encode(std::u16string_view text);
    /// Ends the text, and returns what the encoding puts at its end. Throws InvalidCharacterException if a leading surrogate
    /// has no second half. The next piece begins a new text.
    std::string finish();

    /// At first true, see CharToByteConverter.
    void setSubstitutionMode(bool mode);

private:
    const Reference<CharToByteConverter> m_converter;
};

} // namespace vx::text::charset
