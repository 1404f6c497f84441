#pragma once

#include "vxsys/Text.h"
#include "vxsys/detail/Vector.h"

#include <cstdint>
#include <type_traits>
#if VX_VECTOR_PATHS
#include <emmintrin.h>
#endif

namespace vx::detail {

/// `VXToLowerW`, with a shortcut for ASCII.
inline char16_t lowerUnit(char16_t unit) noexcept
{
    if (unit >= 0x80)
        return VXToLowerW(unit);
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + (u'a' - u'A')) : unit;
}

#if VX_VECTOR_PATHS

/// The hash of `length` units, a multiple of 8: `hash * 37 + unit` for each, from 0 on.
inline std::uint32_t hashBlocks(const char16_t* text, int length) noexcept
{
    constexpr std::uint32_t FACTOR2 = 37 * 37;
    constexpr std::uint32_t FACTOR4 = FACTOR2 * FACTOR2;
    const __m128i sign = _mm_set1_epi16(-0x8000); // the multiplication takes signed units: each is 0x8000 less ...
    const __m128i more = _mm_set1_epi32(0x8000 * 38); // ... which this adds again to the sum of a pair
    const __m128i weights = _mm_set1_epi32(1 << 16 | 37);
    const __m128i pairFactor = _mm_set1_epi32(FACTOR2);
    const __m128i blockFactor = _mm_set1_epi32(static_cast<int>(FACTOR4 * FACTOR4));
    __m128i sums = _mm_setzero_si128(); // two, in the low halves of 64 bits
    for (int index = 0; index < length; index += 8) {
        const __m128i units = _mm_xor_si128(_mm_loadu_si128(reinterpret_cast<const __m128i*>(text + index)), sign);
        const __m128i pairs = _mm_add_epi32(_mm_madd_epi16(units, weights), more);
        const __m128i fours = _mm_add_epi64(_mm_mul_epu32(pairs, pairFactor), _mm_srli_epi64(pairs, 32));
        sums = _mm_add_epi64(_mm_mul_epu32(sums, blockFactor), fours);
    }
    const auto first = static_cast<std::uint32_t>(_mm_cvtsi128_si32(sums));
    const auto second = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_unpackhi_epi64(sums, sums)));
    return first * FACTOR4 + second;
}

#endif

/// The hash of text keys: `hash * 37 + unit` over at most 63 units at equal distances. It reads four units at a time,
/// whose products do not depend on each other.
constexpr std::uint32_t hashText(const char16_t* text, int length, bool ignoreCase) noexcept
{
    constexpr std::uint32_t FACTOR = 37;
    constexpr std::uint32_t FACTOR2 = FACTOR * FACTOR;
    const auto unitAt
        = [=](std::int64_t index) -> std::uint32_t { return ignoreCase ? lowerUnit(text[index]) : text[index]; };
    const std::int64_t step = (length - 32) / 32 + 1;
    std::uint32_t hash = 0;
    std::int64_t index = 0;
#if VX_VECTOR_PATHS
    if (step == 1 && length >= 8 && !ignoreCase && !std::is_constant_evaluated()) {
        index = length & ~7;
        hash = hashBlocks(text, static_cast<int>(index));
    }
#endif
    for (; index + 3 * step < length; index += 4 * step) {
        const std::uint32_t first = unitAt(index) * FACTOR + unitAt(index + step);
        const std::uint32_t second = unitAt(index + 2 * step) * FACTOR + unitAt(index + 3 * step);
        hash = hash * (FACTOR2 * FACTOR2) + first * FACTOR2 + second;
    }
    for (; index < length; index += step)
        hash = hash * FACTOR + unitAt(index);
    return hash;
}

} // namespace vx::detail
