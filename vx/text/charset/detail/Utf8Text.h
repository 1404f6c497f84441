#pragma once

#include "vx/Reference.h"
#include "vx/text/charset/BTCUTF8.h"
#include "vx/text/charset/CTBUTF8.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vx::text::charset::detail {

/// Whether `encoding` is a name of UTF-8 that the library has registered. Null means the default encoding.
bool isUtf8(const char16_t* encoding);

/// Decodes whole characters into `out`, which has room for `length` units. `*read` becomes the number of bytes read, which
/// is below `length` if the text ends within a character. Returns the units stored. Throws as BTCUTF8 does.
std::int32_t decodeUtf8(const char* bytes, std::int32_t length, char16_t* out, std::int32_t* read);

/// Any lone surrogate throws InvalidCharacterException; what is too long for 32 bits throws std::bad_alloc.
std::string encodeUtf8(std::u16string_view text);

/// Encodes a short text without surrogates if `out` has room for any such text of this length, and returns the number of
/// bytes. Otherwise returns -1, and what `out` holds then has no meaning. One call for most texts.
std::int32_t encodeUtf8AtOnce(std::u16string_view text, signed char* out, std::int32_t size) noexcept;

/// Encodes from `position` on as `encodeText` does.
void encodeUtf8(
    std::u16string_view text, std::int32_t& position, signed char* out, std::int32_t& written, std::int32_t size);

/// The converter of a name for one text. For UTF-8 it needs no look-up by name and no memory.
template <class Converter, class Utf8Converter>
class ConverterFor {
public:
    /// Throws UnknownEncodingException.
    explicit ConverterFor(const char16_t* encoding)
        : m_named(detail::isUtf8(encoding) ? nullptr : Converter::getConverter(encoding))
    {
    }

    bool isUtf8() const noexcept { return m_named == nullptr; }
    Converter& operator*() noexcept { return *operator->(); }
    Converter* operator->() noexcept { return isUtf8() ? &m_utf8 : m_named.get(); }

private:
    Utf8Converter m_utf8;
    Reference<Converter> m_named;
};

using DecoderFor = ConverterFor<ByteToCharConverter, BTCUTF8>;
using EncoderFor = ConverterFor<CharToByteConverter, CTBUTF8>;

} // namespace vx::text::charset::detail
