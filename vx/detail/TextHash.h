#pragma once

#include "vxsys/Text.h"
#include "vxsys/detail/Vector.h"

#include <array>
#include <cstddef>
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

constexpr std::uint32_t HASH_FACTOR = 37;

#if VX_VECTOR_PATHS

/// The powers of the factor from 0 to 8.
constexpr auto HASH_POWERS = [] {
    std::array<std::uint32_t, 9> powers {1};
    for (std::size_t exponent = 1; exponent < powers.size(); ++exponent)
        powers[exponent] = powers[exponent - 1] * HASH_FACTOR;
    return powers;
}();

/// Adds 8 units, of which the first ones may be 0, to the two sums of a hash, which are in the low halves of 64 bits.
inline __m128i hashBlock(__m128i sums, __m128i units, std::uint32_t factor) noexcept
{
    const __m128i sign = _mm_set1_epi16(-0x8000); // the multiplication takes signed units: each is 0x8000 less ...
    const __m128i more = _mm_set1_epi32(0x8000 * 38); // ... which this adds again to the sum of a pair
    const __m128i weights = _mm_set1_epi32(1 << 16 | 37);
    const __m128i pairFactor = _mm_set1_epi32(static_cast<int>(HASH_POWERS[2]));
    const __m128i pairs = _mm_add_epi32(_mm_madd_epi16(_mm_xor_si128(units, sign), weights), more);
    const __m128i fours = _mm_add_epi64(_mm_mul_epu32(pairs, pairFactor), _mm_srli_epi64(pairs, 32));
    return _mm_add_epi64(_mm_mul_epu32(sums, _mm_set1_epi32(static_cast<int>(factor))), fours);
}

/// The hash of at least 8 units: `hash * 37 + unit` for each, from 0 on.
inline std::uint32_t hashBlocks(const char16_t* text, int length) noexcept
{
    constexpr int BLOCK = 8;
    static constexpr std::int16_t MASKS[2 * BLOCK] = {0, 0, 0, 0, 0, 0, 0, 0, -1, -1, -1, -1, -1, -1, -1, -1};
    const auto load = [](const void* place) { return _mm_loadu_si128(static_cast<const __m128i*>(place)); };
    __m128i sums = _mm_setzero_si128();
    int index = 0;
    for (; index <= length - BLOCK; index += BLOCK)
        sums = hashBlock(sums, load(text + index), HASH_POWERS[BLOCK]);
    if (const int rest = length - index; rest != 0) // with units of the block before it, which are masked
        sums = hashBlock(sums, _mm_and_si128(load(text + length - BLOCK), load(MASKS + rest)),
            HASH_POWERS[static_cast<std::size_t>(rest)]);
    const auto first = static_cast<std::uint32_t>(_mm_cvtsi128_si32(sums));
    const auto second = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_unpackhi_epi64(sums, sums)));
    return first * HASH_POWERS[4] + second;
}

#endif

/// The same as `hashText`. It reads four units at a time, whose products do not depend on each other.
constexpr std::uint32_t hashUnits(const char16_t* text, int length, bool ignoreCase) noexcept
{
    constexpr std::uint32_t FACTOR2 = HASH_FACTOR * HASH_FACTOR;
    const auto unitAt
        = [=](std::int64_t index) -> std::uint32_t { return ignoreCase ? lowerUnit(text[index]) : text[index]; };
    const std::int64_t step = (length - 32) / 32 + 1;
    std::uint32_t hash = 0;
    std::int64_t index = 0;
    for (; index + 3 * step < length; index += 4 * step) {
        const std::uint32_t first = unitAt(index) * HASH_FACTOR + unitAt(index + step);
        const std::uint32_t second = unitAt(index + 2 * step) * HASH_FACTOR + unitAt(index + 3 * step);
        hash = hash * (FACTOR2 * FACTOR2) + first * FACTOR2 + second;
    }
    for (; index < length; index += step)
        hash = hash * HASH_FACTOR + unitAt(index);
    return hash;
}

/// The hash of text keys: `hash * 37 + unit` over at most 63 units at equal distances.
constexpr std::uint32_t hashText(const char16_t* text, int length, bool ignoreCase) noexcept
{
#if VX_VECTOR_PATHS
    constexpr int SAMPLED = 64; // from this length on, units are left out
    if (length >= 8 && length < SAMPLED && !ignoreCase && !std::is_constant_evaluated())
        return hashBlocks(text, length);
#endif
    return hashUnits(text, length, ignoreCase);
}

} // namespace vx::detail
