#pragma once

#include "vx/text/charset/CharToByteConverter.h"
#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/Unicode.h"

#include <cstdint>
#include <string_view>

namespace vx::text::charset::detail {

/// Encodes from `position` on as many whole characters as `size` bytes hold, and ends the conversion. The two positions are
/// also set if an exception is thrown.
inline void encodeText(CharToByteConverter& encoder, std::u16string_view text, std::int32_t& position, signed char* out,
    std::int32_t& written, std::int32_t size)
{
    encoder.convert(text.data(), &position, static_cast<std::int32_t>(text.size()), out, &written, size);
    try {
        encoder.flush(out, &written, size);
    } catch (const InvalidCharacterException&) {
        // Some encoders take the lead of a surrogate pair although there is no room for its bytes. Here the pair stays whole.
        const auto next = static_cast<std::size_t>(position);
        if (next == 0 || next >= text.size() || !isTrail(text[next]))
            throw;
        encoder.reset();
        --position;
    }
}

} // namespace vx::text::charset::detail
