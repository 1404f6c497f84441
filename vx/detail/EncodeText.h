#pragma once

#include "vx/text/charset/CharToByteConverter.h"
#include "vx/text/charset/CharsetException.h"

#include <cstdint>
#include <string_view>

namespace vx::detail {

/// Encodes from `position` on as many whole characters as `size` bytes hold, and ends the conversion. The two positions
/// are told also when an exception passes.
inline void encodeText(text::charset::CharToByteConverter& encoder, std::u16string_view text, std::int32_t& position,
    signed char* out, std::int32_t& written, std::int32_t size)
{
    encoder.convert(text.data(), &position, static_cast<std::int32_t>(text.size()), out, &written, size);
    try {
        encoder.flush(out, &written, size);
    } catch (const text::charset::InvalidCharacterException&) {
        // Without room for a pair some encoders take its lead and wait for the room. Here the pair waits as a whole.
        const auto next = static_cast<std::size_t>(position);
        if (next == 0 || next >= text.size() || (text[next] & 0xFC00) != 0xDC00)
            throw;
        encoder.reset();
        --position;
    }
}

} // namespace vx::detail
