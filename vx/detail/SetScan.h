#pragma once

#include "vx/detail/UnitSet.h"
#include "vxsys/detail/Vector.h"

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

/// The same for the units of a set themselves, without regard to their other cases. Most sets have few units, and most searches
/// end soon: then comparisons take less time than it takes to build a `UnitSet`.
inline int scanUnits(
    const char16_t* text, int from, int length, const char16_t* units, int unitCount, bool wanted) noexcept
{
#if VX_VECTOR_PATHS
    constexpr int BLOCK = 8;
    constexpr int FEW = 6;
    if (unitCount <= FEW && length >= BLOCK) {
        __m128i lanes[FEW];
        for (int index = 0; index < unitCount; ++index)
            lanes[index] = _mm_set1_epi16(static_cast<short>(units[index]));
        const unsigned other = wanted ? 0 : 0xFFFF;
        while (from < length) {
            const int start = from + BLOCK <= length ? from : length - BLOCK; // the last block may begin before `from`
            const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + start));
            __m128i found = _mm_setzero_si128();
            for (int index = 0; index < unitCount; ++index)
                found = _mm_or_si128(found, _mm_cmpeq_epi16(block, lanes[index]));
            const unsigned bits = (static_cast<unsigned>(_mm_movemask_epi8(found)) ^ other) >> 2 * (from - start);
            if (bits != 0)
                return from + std::countr_zero(bits) / 2;
            from = start + BLOCK;
        }
        return length;
    }
#endif
    return scanSet(text, from, length, UnitSet(units, unitCount, false), wanted);
}

} // namespace vx::detail
