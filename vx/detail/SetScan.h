#pragma once

#include "vx/detail/UnitSet.h"
#include "vxsys/detail/Vector.h"

#include <algorithm>

#if VX_VECTOR_PATHS
#include <bit>
#include <emmintrin.h>
#endif

namespace vx::detail {

/// The first index from `from` up to, but not including, `length` at which a unit is in `set`, or is not if `wanted` is
/// false. `length` if there is none.
inline int scanSet(const char16_t* text, int from, int length, const UnitSet& set, bool wanted) noexcept
{
    while (from < length && set.contains(text[from]) != wanted)
        ++from;
    return from;
}

/// The same for a few units themselves, without regard to their other cases.
inline int scanFew(
    const char16_t* text, int from, int length, const char16_t* units, int unitCount, bool wanted) noexcept
{
    while (from < length && (std::find(units, units + unitCount, text[from]) != units + unitCount) != wanted)
        ++from;
    return from;
}

inline constexpr int SET_BLOCK = 8;

#if VX_VECTOR_PATHS
/// The same for a text of no less than one block. The number of units is a constant, so that registers hold them.
template <int UNIT_COUNT>
int scanBlocks(const char16_t* text, int from, int length, const char16_t* units, bool wanted) noexcept
{
    __m128i lanes[UNIT_COUNT];
    int done = 0;
    if constexpr (UNIT_COUNT >= 4) { // four at once take fewer instructions
        const __m128i four = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(units));
        const __m128i pairs = _mm_unpacklo_epi16(four, four);
        lanes[0] = _mm_shuffle_epi32(pairs, 0x00);
        lanes[1] = _mm_shuffle_epi32(pairs, 0x55);
        lanes[2] = _mm_shuffle_epi32(pairs, 0xAA);
        lanes[3] = _mm_shuffle_epi32(pairs, 0xFF);
        done = 4;
    }
    for (int index = done; index < UNIT_COUNT; ++index)
        lanes[index] = _mm_set1_epi16(static_cast<short>(units[index]));
    const unsigned other = wanted ? 0 : 0xFFFF;
    while (from < length) {
        const int start = std::min(from, length - SET_BLOCK); // the last block may begin before `from`
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + start));
        __m128i found = _mm_cmpeq_epi16(block, lanes[0]);
        for (int index = 1; index < UNIT_COUNT; ++index)
            found = _mm_or_si128(found, _mm_cmpeq_epi16(block, lanes[index]));
        const unsigned bits = (static_cast<unsigned>(_mm_movemask_epi8(found)) ^ other) >> 2 * (from - start);
        if (bits != 0)
            return from + std::countr_zero(bits) / 2;
        from = start + SET_BLOCK;
    }
    return length;
}
#endif

/// The same for a short text or many units. It is kept apart, so that other searches need no stack frame.
[[gnu::noinline]] inline int scanElsewhere(
    const char16_t* text, int from, int length, const char16_t* units, int unitCount, bool wanted) noexcept
{
    return length < SET_BLOCK ? scanFew(text, from, length, units, unitCount, wanted)
                              : scanSet(text, from, length, UnitSet(units, unitCount, false), wanted);
}

/// The same for the units of a set themselves. Most sets have few units, and most searches end soon: then comparisons take less
/// time than it takes to build a `UnitSet`.
inline int scanUnits(
    const char16_t* text, int from, int length, const char16_t* units, int unitCount, bool wanted) noexcept
{
#if VX_VECTOR_PATHS
    if (length >= SET_BLOCK) [[likely]] {
        switch (unitCount) {
        case 1:
            return scanBlocks<1>(text, from, length, units, wanted);
        case 2:
            return scanBlocks<2>(text, from, length, units, wanted);
        case 3:
            return scanBlocks<3>(text, from, length, units, wanted);
        case 4:
            return scanBlocks<4>(text, from, length, units, wanted);
        case 5:
            return scanBlocks<5>(text, from, length, units, wanted);
        case 6:
            return scanBlocks<6>(text, from, length, units, wanted);
        default:
            break;
        }
    }
#endif
    return scanElsewhere(text, from, length, units, unitCount, wanted);
}

} // namespace vx::detail
