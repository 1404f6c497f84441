#pragma once

#include "vx/text/charset/detail/Lanes.h"
#include "vx/text/charset/detail/Pass.h"

#if VX_VECTOR_PATHS

#include <algorithm>
#include <bit>
#include <cstdint>

namespace vx::text::charset::detail {

/// Units that are encoded at once.
inline constexpr std::ptrdiff_t UNITS = LANES / 2;

/// For operations that GCC 12 warns about in the form without a mask.
inline constexpr __mmask16 ALL_LANES = 0xFFFF;

/// One bit for each unit from `least` on.
VX_USES_COMPRESS inline std::uint32_t unitsFrom(__m512i units, int least) noexcept
{
    return _mm512_cmpge_epu16_mask(units, _mm512_set1_epi16(static_cast<short>(least)));
}

/// The bits of `lanes` that `mask` has after a shift to the right, or to the left for a negative one.
template <int shift>
VX_USES_COMPRESS inline __m512i bitsOf(__m512i lanes, int mask) noexcept
{
    const __m512i masks = _mm512_set1_epi32(mask);
    if constexpr (shift < 0)
        return _mm512_and_si512(_mm512_maskz_slli_epi32(ALL_LANES, lanes, -shift), masks);
    else
        return _mm512_and_si512(_mm512_maskz_srli_epi32(ALL_LANES, lanes, shift), masks);
}

/// Stores the bytes that are kept, and changes nothing after them.
VX_USES_COMPRESS inline signed char* storeKept(signed char* out, __m512i bytes, std::uint64_t kept) noexcept
{
    const int count = std::popcount(kept);
    _mm512_mask_storeu_epi8(out, firstLanes(count), _mm512_maskz_compress_epi8(kept, bytes));
    return out + count;
}

/// Stores half of the units as one to three bytes each. `count` is the number of units in this half.
template <int half>
VX_USES_COMPRESS inline signed char* storeTriples(signed char* out, __m512i units, std::ptrdiff_t count) noexcept
{
    const __m512i values = _mm512_maskz_cvtepu16_epi32(ALL_LANES, _mm512_maskz_extracti64x4_epi64(0xFF, units, half));
    const __m512i pairs = _mm512_or_si512(
        _mm512_or_si512(bitsOf<6>(values, 0x1F), bitsOf<-8>(values, 0x3F00)), _mm512_set1_epi32(0x80C0));
    const __m512i triples = _mm512_or_si512(_mm512_or_si512(bitsOf<12>(values, 0xF), bitsOf<-2>(values, 0x3F00)),
        _mm512_or_si512(bitsOf<-16>(values, 0x3F0000), _mm512_set1_epi32(0x8080E0)));
    const __mmask16 arePairs = _mm512_cmpge_epu32_mask(values, _mm512_set1_epi32(0x80));
    const __mmask16 areTriples = _mm512_cmpge_epu32_mask(values, _mm512_set1_epi32(0x800));
    const __m512i bytes = _mm512_mask_mov_epi32(_mm512_mask_mov_epi32(values, arePairs, pairs), areTriples, triples);
    const std::uint64_t kept
        = _mm512_movepi8_mask(bytes) | 0x1111111111111111; // each first byte, and all that follow it
    return storeKept(out, bytes, kept & firstLanes(4 * std::max<std::ptrdiff_t>(count, 0)));
}

/// Encodes until 32 units have a surrogate, or near the end of the room. No branch depends on which of the units are
/// ASCII, since the processor could not predict it in short text.
[[gnu::always_inline]] VX_USES_COMPRESS inline void encodeLanes(
    const char16_t*& in, const char16_t* inEnd, signed char*& out, const signed char* outEnd) noexcept
{
    const char16_t* from = in;
    signed char* to = out;
    while (from < inEnd) {
        const std::ptrdiff_t left = std::min(inEnd - from, UNITS);
        if (outEnd - to < 3 * left)
            break;
        const auto lanes = static_cast<__mmask32>(firstLanes(left));
        const __m512i units = _mm512_maskz_loadu_epi16(lanes, from);
        if (unitsFrom(units, 0x80) == 0) {
            _mm256_mask_storeu_epi8(to, lanes, _mm512_maskz_cvtepi16_epi8(lanes, units));
            to += left;
        } else if (unitsFrom(units, 0x800) == 0) {
            const __m512i pairs
                = _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi16(units, 6),
                                      _mm512_slli_epi16(_mm512_and_si512(units, _mm512_set1_epi16(0x3F)), 8)),
                    _mm512_set1_epi16(static_cast<short>(0x80C0)));
            const __m512i bytes = _mm512_mask_mov_epi16(units, unitsFrom(units, 0x80), pairs);
            const std::uint64_t kept = _mm512_movepi8_mask(bytes) | 0x5555555555555555;
            to = storeKept(to, bytes, kept & firstLanes(2 * left));
        } else {
            const __m512i tops = _mm512_and_si512(units, _mm512_set1_epi16(static_cast<short>(0xF800)));
            if (_mm512_cmpeq_epi16_mask(tops, _mm512_set1_epi16(static_cast<short>(0xD800))) != 0)
                break;
            to = storeTriples<0>(to, units, left);
            to = storeTriples<1>(to, units, left - UNITS / 2);
        }
        from += left;
    }
    in = from;
    out = to;
}

/// The same for the positions of a converter.
VX_USES_COMPRESS inline void encodeByLanes(Encoding& pass) noexcept
{
    encodeLanes(pass.in, pass.inEnd, pass.out, pass.outEnd);
}

} // namespace vx::text::charset::detail

#endif
