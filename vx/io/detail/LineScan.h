#pragma once

#include "vxsys/detail/Vector.h"

#include <bit>
#include <cstdint>

#if VX_VECTOR_PATHS
#include <emmintrin.h>
#endif

namespace vx::io::detail {

inline bool isLineEnd(char16_t unit) noexcept
{
    return unit == 10 || unit == 13;
}

/// The first line feed or carriage return in `length` units, or `length`.
inline std::int32_t findLineEnd(const char16_t* text, std::int32_t length) noexcept
{
    std::int32_t index = 0;
#if VX_VECTOR_PATHS
    const __m128i lineFeed = _mm_set1_epi16(10);
    const __m128i carriageReturn = _mm_set1_epi16(13);
    const auto lineEnds = [&](const char16_t* units) {
        const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
        return _mm_or_si128(_mm_cmpeq_epi16(eight, lineFeed), _mm_cmpeq_epi16(eight, carriageReturn));
    };
    for (; length - index >= 16; index += 16) {
        const __m128i both = _mm_packs_epi16(lineEnds(text + index), lineEnds(text + index + 8));
        if (const int found = _mm_movemask_epi8(both); found != 0)
            return index + std::countr_zero(static_cast<unsigned>(found));
    }
#endif
    while (index < length && !isLineEnd(text[index]))
        ++index;
    return index;
}

} // namespace vx::io::detail
