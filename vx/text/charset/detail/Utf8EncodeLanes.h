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

/// Two bytes for each unit from 0x80 to 0x7FF.
VX_USES_COMPRESS inline __m512i pairsOf(__m512i units) noexcept
{
    const __m512i second = _mm512_slli_epi16(_mm512_and_si512(units, _mm512_set1_epi16(0x3F)), 8);
    return _mm512_or_si512(
        _mm512_or_si512(_mm512_srli_epi16(units, 6), second), _mm512_set1_epi16(static_cast<short>(0x80C0)));
}

/// Two of the four bytes for each surrogate. A trailing one includes two bits of the unit before it.
VX_USES_COMPRESS inline __m512i halvesOf(__m512i units, __m512i before, __mmask32 leads) noexcept
{
    const __m512i sixBits = _mm512_set1_epi16(0x3F);
    const __m512i value
        = _mm512_add_epi16(_mm512_and_si512(units, _mm512_set1_epi16(0x3FF)), _mm512_set1_epi16(0x40)); // and 0x10000
    const __m512i lead
        = _mm512_or_si512(_mm512_or_si512(_mm512_srli_epi16(value, 8), _mm512_set1_epi16(static_cast<short>(0x80F0))),
            _mm512_slli_epi16(_mm512_and_si512(_mm512_srli_epi16(value, 2), sixBits), 8));
    const __m512i third = _mm512_or_si512(_mm512_slli_epi16(_mm512_and_si512(before, _mm512_set1_epi16(3)), 4),
        _mm512_and_si512(_mm512_srli_epi16(units, 6), _mm512_set1_epi16(0xF)));
    const __m512i trail
        = _mm512_or_si512(_mm512_or_si512(third, _mm512_slli_epi16(_mm512_and_si512(units, sixBits), 8)),
            _mm512_set1_epi16(static_cast<short>(0x8080)));
    return _mm512_mask_mov_epi16(trail, leads, lead);
}

/// Stores half of the units as one to three bytes each: where `areShort`, the two bytes of `shorts`. `count` is the number of
/// units in this half.
template <int half>
VX_USES_COMPRESS inline signed char* storeTriples(
    signed char* out, __m512i units, __m512i shorts, __mmask32 areShort, std::ptrdiff_t count) noexcept
{
    const __m512i values = _mm512_maskz_cvtepu16_epi32(ALL_LANES, _mm512_maskz_extracti64x4_epi64(0xFF, units, half));
    const __m512i pairs = _mm512_maskz_cvtepu16_epi32(ALL_LANES, _mm512_maskz_extracti64x4_epi64(0xFF, shorts, half));
    const __m512i triples = _mm512_or_si512(_mm512_or_si512(bitsOf<12>(values, 0xF), bitsOf<-2>(values, 0x3F00)),
        _mm512_or_si512(bitsOf<-16>(values, 0x3F0000), _mm512_set1_epi32(0x8080E0)));
    const __mmask16 areLong = _mm512_cmpge_epu32_mask(values, _mm512_set1_epi32(0x80));
    __m512i bytes = _mm512_mask_mov_epi32(values, areLong, triples);
    bytes = _mm512_mask_mov_epi32(bytes, static_cast<__mmask16>(areShort >> LANES / 4 * half), pairs);
    const std::uint64_t kept
        = _mm512_movepi8_mask(bytes) | 0x1111111111111111; // each first byte, and all that follow it
    return storeKept(out, bytes, kept & firstLanes(4 * std::max<std::ptrdiff_t>(count, 0)));
}

/// Encodes until 32 units have a lone surrogate, or near the end of the room. No branch depends on which of the units are
/// ASCII, since the processor could not predict it in short text.
[[gnu::always_inline]] VX_USES_COMPRESS inline void encodeLanes(
    const char16_t*& in, const char16_t* inEnd, signed char*& out, const signed char* outEnd) noexcept
{
    const char16_t* from = in;
    signed char* to = out;
    while (from < inEnd) {
        std::ptrdiff_t count = std::min(inEnd - from, UNITS);
        if (outEnd - to < 3 * count)
            break;
        const auto lanes = static_cast<__mmask32>(firstLanes(count));
        const __m512i units = _mm512_maskz_loadu_epi16(lanes, from);
        const std::uint32_t notAscii = unitsFrom(units, 0x80);
        const std::uint32_t triples = unitsFrom(units, 0x800);
        if (notAscii == 0) {
            _mm256_mask_storeu_epi8(to, lanes, _mm512_maskz_cvtepi16_epi8(lanes, units));
            to += count;
        } else if (triples == 0) {
            const __m512i bytes = _mm512_mask_mov_epi16(units, notAscii, pairsOf(units));
            const std::uint64_t kept = _mm512_movepi8_mask(bytes) | 0x5555555555555555;
            to = storeKept(to, bytes, kept & firstLanes(2 * count));
        } else {
            __m512i shorts = pairsOf(units);
            std::uint32_t areShort = notAscii & ~triples;
            const __m512i tops = _mm512_and_si512(units, _mm512_set1_epi16(static_cast<short>(0xF800)));
            std::uint32_t surrogates = _mm512_cmpeq_epi16_mask(tops, _mm512_set1_epi16(static_cast<short>(0xD800)));
            if (surrogates != 0) {
                std::uint32_t leads = surrogates & ~unitsFrom(units, 0xDC00);
                if (const std::uint32_t last = std::uint32_t {1} << (count - 1); (leads & last) != 0) {
                    --count; // its trailing one is not in these lanes
                    leads &= ~last;
                    surrogates &= ~last;
                }
                if (surrogates != (leads | leads << 1) || (leads & leads << 1) != 0 || count == 0)
                    break;
                const __m512i before = _mm512_maskz_loadu_epi16(leads << 1, from - 1);
                shorts = _mm512_mask_mov_epi16(shorts, surrogates, halvesOf(units, before, leads));
                areShort |= surrogates;
            }
            to = storeTriples<0>(to, units, shorts, areShort, count);
            to = storeTriples<1>(to, units, shorts, areShort, count - UNITS / 2);
        }
        from += count;
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
