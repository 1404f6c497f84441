#pragma once

#include "vx/text/charset/detail/Lanes.h"
#include "vx/text/charset/detail/Pass.h"

#if VX_VECTOR_PATHS

#include <algorithm>
#include <bit>
#include <cstdint>

namespace vx::text::charset::detail {

VX_USES_COMPRESS inline __m512i loadLanes(const signed char* bytes, std::ptrdiff_t count) noexcept
{
    return _mm512_maskz_loadu_epi8(firstLanes(count), bytes);
}

/// One bit for each continuation byte.
VX_USES_COMPRESS inline std::uint64_t followersOf(__m512i bytes) noexcept
{
    return _mm512_cmplt_epi8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xC0)));
}

/// One bit for each byte from `least` on.
VX_USES_COMPRESS inline std::uint64_t notBelow(__m512i bytes, int least) noexcept
{
    return _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(least)));
}

/// Half of the bytes as units. The form with a mask, since GCC 12 warns about the other one.
template <int half>
VX_USES_COMPRESS inline __m512i widened(__m512i bytes) noexcept
{
    return _mm512_cvtepu8_epi16(_mm512_maskz_extracti64x4_epi64(0xFF, bytes, half));
}

/// The six bits of half of the bytes that a continuation byte has for its character.
template <int half>
VX_USES_COMPRESS inline __m512i sixBits(__m512i bytes) noexcept
{
    return _mm512_and_si512(widened<half>(bytes), _mm512_set1_epi16(0x3F));
}

/// Each of half of the bytes as a unit: by itself, or with the next byte if it is a first byte.
template <int half>
VX_USES_COMPRESS inline __m512i pairsOf(__m512i first, __m512i second, std::uint64_t leads) noexcept
{
    const __m512i single = widened<half>(first);
    const __m512i high = _mm512_slli_epi16(_mm512_and_si512(single, _mm512_set1_epi16(0x1F)), 6);
    return _mm512_mask_mov_epi16(
        single, static_cast<__mmask32>(leads >> 32 * half), _mm512_or_si512(high, sixBits<half>(second)));
}

/// The same with the next two bytes, for characters of three bytes.
template <int half>
VX_USES_COMPRESS inline __m512i triplesOf(__m512i first, __m512i second, __m512i third) noexcept
{
    return _mm512_or_si512(_mm512_slli_epi16(widened<half>(first), 12),
        _mm512_or_si512(_mm512_slli_epi16(sixBits<half>(second), 6), sixBits<half>(third)));
}

/// One bit for each surrogate.
VX_USES_COMPRESS inline std::uint32_t surrogatesOf(__m512i units) noexcept
{
    return _mm512_cmpeq_epi16_mask(_mm512_and_si512(units, _mm512_set1_epi16(static_cast<short>(0xF800))),
        _mm512_set1_epi16(static_cast<short>(0xD800)));
}

/// A character of four bytes becomes two units: the first one in the lane of its first byte, the other one in that of its
/// third byte.
template <int half>
VX_USES_COMPRESS inline __m512i withQuads(
    __m512i units, __m512i first, __m512i second, __m512i third, std::uint64_t quads) noexcept
{
    const __m512i single = widened<half>(first);
    const __m512i low = sixBits<half>(second);
    const __m512i lead
        = _mm512_add_epi16(_mm512_set1_epi16(static_cast<short>(0xD7C0)), // 0xD800 less the bits of 0x10000
            _mm512_or_si512(_mm512_slli_epi16(_mm512_and_si512(single, _mm512_set1_epi16(0x07)), 8),
                _mm512_or_si512(_mm512_slli_epi16(low, 2), _mm512_srli_epi16(sixBits<half>(third), 4))));
    const __m512i trail = _mm512_or_si512(_mm512_set1_epi16(static_cast<short>(0xDC00)),
        _mm512_or_si512(_mm512_slli_epi16(_mm512_and_si512(single, _mm512_set1_epi16(0x0F)), 6), low));
    units = _mm512_mask_mov_epi16(units, static_cast<__mmask32>(quads >> 32 * half), lead);
    return _mm512_mask_mov_epi16(units, static_cast<__mmask32>(quads << 2 >> 32 * half), trail);
}

/// One bit for each first byte of four after which the next bytes are wrong, or make no character.
VX_USES_COMPRESS inline std::uint64_t wrongQuads(
    __m512i first, __m512i second, __m512i fourth, std::uint64_t quads) noexcept
{
    const std::uint64_t high = notBelow(second, 0x90);
    const std::uint64_t fromF1 = notBelow(first, 0xF1);
    const std::uint64_t fromF4 = notBelow(first, 0xF4);
    return quads & (~followersOf(fourth) | (~fromF1 & ~high) | (fromF4 & high) | notBelow(first, 0xF5));
}

/// Stores the units that are kept, and changes nothing after them.
VX_USES_COMPRESS inline char16_t* storeKept(char16_t* out, __m512i units, std::uint32_t kept) noexcept
{
    const int count = std::popcount(kept);
    const auto lanes = static_cast<__mmask32>(firstLanes(count));
    _mm512_mask_storeu_epi16(out, lanes, _mm512_maskz_compress_epi16(kept, units));
    return out + count;
}

/// Decodes until 64 bytes have a fault. Overlong forms of three bytes are accepted. Each byte becomes a unit together with
/// the bytes after it; those of most continuation bytes are left out. No branch depends on where a character ends, since the
/// processor could not predict it in short text.
[[gnu::always_inline]] VX_USES_COMPRESS inline void decodeLanes(
    const signed char*& in, const signed char* inEnd, char16_t*& out, const char16_t* outEnd) noexcept
{
    std::uint64_t open = 0; // the continuation bytes that the character before needs
    const signed char* at = in;
    char16_t* to = out;
    for (; at < inEnd; at += LANES) {
        const std::ptrdiff_t left = inEnd - at;
        if (outEnd - to < std::min(left, LANES))
            break;
        const std::uint64_t lanes = firstLanes(left);
        const __m512i first = loadLanes(at, left);
        if ((_mm512_movepi8_mask(first) | open) == 0) {
            _mm512_mask_storeu_epi16(to, static_cast<__mmask32>(lanes), widened<0>(first));
            _mm512_mask_storeu_epi16(to + LANES / 2, static_cast<__mmask32>(lanes >> 32), widened<1>(first));
            to += std::min(left, LANES);
            continue;
        }
        const __m512i second = loadLanes(at + 1, left - 1);
        const std::uint64_t following = followersOf(first);
        const std::uint64_t leads = notBelow(first, 0xC0);
        const std::uint64_t triples = notBelow(first, 0xE0); // of three bytes or four
        const std::uint64_t expected = open | leads << 1 | triples << 2;
        std::uint64_t faults = (leads & ~followersOf(second)) | (leads & ~notBelow(first, 0xC2));
        __m512i lower = pairsOf<0>(first, second, leads);
        __m512i upper = pairsOf<1>(first, second, leads);
        if (triples != 0) {
            const __m512i third = loadLanes(at + 2, std::max<std::ptrdiff_t>(left - 2, 0));
            const auto lowerTriples = static_cast<__mmask32>(triples);
            const auto upperTriples = static_cast<__mmask32>(triples >> 32);
            lower = _mm512_mask_mov_epi16(lower, lowerTriples, triplesOf<0>(first, second, third));
            upper = _mm512_mask_mov_epi16(upper, upperTriples, triplesOf<1>(first, second, third));
            const std::uint64_t surrogates
                = (surrogatesOf(lower) & lowerTriples) | std::uint64_t {surrogatesOf(upper) & upperTriples} << 32;
            faults |= triples & ~followersOf(third);
            if (const std::uint64_t quads = notBelow(first, 0xF0); quads != 0) {
                const __m512i fourth = loadLanes(at + 3, std::max<std::ptrdiff_t>(left - 3, 0));
                faults |= (surrogates & ~quads) | wrongQuads(first, second, fourth, quads)
                    | (following & ~(expected | quads << 3));
                // A character that ends after these lanes is left to the next ones.
                const int unused = std::countl_zero(quads) < 3 ? 3 - std::countr_zero(quads >> (LANES - 3)) : 0;
                const std::uint64_t used = firstLanes(std::min(left, LANES - unused));
                if ((faults & used) != 0)
                    break;
                const std::uint64_t kept = used & (~following | quads << 2);
                to = storeKept(to, withQuads<0>(lower, first, second, third, quads), static_cast<std::uint32_t>(kept));
                to = storeKept(
                    to, withQuads<1>(upper, first, second, third, quads), static_cast<std::uint32_t>(kept >> 32));
                open = (leads & used) >> 63 | (triples & used) >> 62;
                at -= unused;
                continue;
            }
            faults |= surrogates;
        }
        faults |= following & ~expected;
        if (faults != 0) [[unlikely]]
            break;
        const std::uint64_t kept = lanes & ~following;
        to = storeKept(to, lower, static_cast<std::uint32_t>(kept));
        to = storeKept(to, upper, static_cast<std::uint32_t>(kept >> 32));
        open = leads >> 63 | triples >> 62;
    }
    in = std::min(at + std::popcount(open), inEnd);
    out = to;
}

/// The same for the positions of a converter.
VX_USES_COMPRESS inline void decodeByLanes(Decoding& pass) noexcept
{
    decodeLanes(pass.in, pass.inEnd, pass.out, pass.outEnd);
}

} // namespace vx::text::charset::detail

#endif
