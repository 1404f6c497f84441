#pragma once

#include "vx/text/charset/detail/Block.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Utf8EncodeLanes.h"
#include "vxsys/detail/Vector.h"

#if VX_VECTOR_PATHS

#include <algorithm>

namespace vx::text::charset::detail {

// Each unit becomes a lane of bytes, and the lanes are packed by a shuffle. Each unit of a surrogate pair becomes two
// of the four bytes, so that no unit has more than three.

/// Eight lanes of one or two bytes, by the bits of those with one.
inline constexpr auto ENCODE_PAIRS = [] {
    std::array<Packing, 256> packings {};
    for (unsigned singles = 0; singles < packings.size(); ++singles)
        packings[singles] = packingOf(2, [=](unsigned lane) { return 2 - (singles >> lane & 1); });
    return packings;
}();

/// Four lanes of one to three bytes, by the bits of those with one, followed by the bits of those with three.
inline constexpr auto ENCODE_TRIPLES = [] {
    std::array<Packing, 256> packings {};
    for (unsigned bits = 0; bits < packings.size(); ++bits) {
        packings[bits] = packingOf(4, [=](unsigned lane) { return 2 - (bits >> lane & 1) + (bits >> lane >> 4 & 1); });
    }
    return packings;
}();

/// Two bytes in each lane, of the units from 0x80 to 0x7FF.
inline __m128i encodePairs(__m128i units) noexcept
{
    return either(bits16<6>(units, 0x1F), bits16<-8>(units, 0x3F00), _mm_set1_epi16(static_cast<short>(0x80C0)));
}

/// The same for surrogates. A trailing one includes two bits of the unit before it.
inline __m128i encodeSurrogates(__m128i units, __m128i before, __m128i isLead) noexcept
{
    const __m128i values = _mm_add_epi16(bits16<0>(units, 0x3FF), _mm_set1_epi16(0x40));
    const __m128i leads
        = either(bits16<8>(values, 7), bits16<-6>(values, 0x3F00), _mm_set1_epi16(static_cast<short>(0x80F0)));
    const __m128i trails = either(bits16<-4>(before, 0x30), bits16<6>(units, 0xF), bits16<-8>(units, 0x3F00),
        _mm_set1_epi16(static_cast<short>(0x8080)));
    return choose(isLead, leads, trails);
}

/// Three bytes in each lane of 32 bits.
inline __m128i encodeTriples(__m128i values) noexcept
{
    return either(
        bits32<12>(values, 0xF), bits32<-2>(values, 0x3F00), bits32<-16>(values, 0x3F0000), _mm_set1_epi32(0x8080E0));
}

VX_USES_SHUFFLE inline signed char* storePacked(signed char* out, __m128i lanes, const Packing& packing) noexcept
{
    storeBlock(out, shuffle(lanes, packing.shuffle));
    return out + packing.length;
}

/// Stores one to three bytes for each of eight units: those of `shorts` where `isShort`, of which `singles` have one byte,
/// else three of `units`. Up to BLOCK bytes after them may be written.
VX_USES_SHUFFLE inline signed char* storeLanes(
    signed char* out, __m128i units, __m128i shorts, __m128i isShort, unsigned singles) noexcept
{
    const __m128i zero = _mm_setzero_si128();
    const unsigned triples = lanes16(isShort) ^ 0xFF;
    if (triples == 0)
        return storePacked(out, shorts, ENCODE_PAIRS[singles]);
    const __m128i low = choose(_mm_unpacklo_epi16(isShort, isShort), _mm_unpacklo_epi16(shorts, zero),
        encodeTriples(_mm_unpacklo_epi16(units, zero)));
    const __m128i high = choose(_mm_unpackhi_epi16(isShort, isShort), _mm_unpackhi_epi16(shorts, zero),
        encodeTriples(_mm_unpackhi_epi16(units, zero)));
    out = storePacked(out, low, ENCODE_TRIPLES[(singles & 15) | (triples & 15) << 4]);
    return storePacked(out, high, ENCODE_TRIPLES[singles >> 4 | (triples >> 4) << 4]);
}

/// Stores a block of units below 0x80 as bytes. If there are others, returns false and stores nothing.
inline bool storePlain(signed char* out, const char16_t* in) noexcept
{
    const __m128i units = loadBlock(in);
    const __m128i more = loadBlock(in + 8);
    const bool isPlain = lanes8(has16(either(units, more), 0xFF80, 0)) == 0xFFFF;
    if (isPlain)
        storeBlock(out, _mm_packus_epi16(units, more));
    return isPlain;
}

/// Stores sixteen units below 0x800 as up to two bytes each. If there are others, returns false and stores nothing.
VX_USES_SHUFFLE inline bool storeShorts(signed char*& out, const char16_t* in) noexcept
{
    const __m128i units = loadBlock(in);
    const __m128i more = loadBlock(in + 8);
    if (lanes8(has16(either(units, more), 0xF800, 0)) != 0xFFFF)
        return false;
    const __m128i areSingle = has16(units, 0xFF80, 0);
    const __m128i moreSingle = has16(more, 0xFF80, 0);
    const unsigned singles = lanes8(_mm_packs_epi16(areSingle, moreSingle));
    out = storePacked(out, choose(areSingle, units, encodePairs(units)), ENCODE_PAIRS[singles & 0xFF]);
    out = storePacked(out, choose(moreSingle, more, encodePairs(more)), ENCODE_PAIRS[singles >> 8]);
    return true;
}

/// Encodes until there is a lone surrogate, or near an end.
VX_USES_SHUFFLE inline void encodeBlocks(Encoding& pass) noexcept
{
    const char16_t* in = pass.in;
    signed char* out = pass.out;
    unsigned open = 0; // 1: the unit before is a lead, whose first two bytes are stored
    bool wasShort = true; // the units before are below 0x800, and such units are often followed by others
    while (pass.inEnd - in >= BLOCK && pass.outEnd - out >= 2 * BLOCK) {
        if (wasShort) {
            const std::ptrdiff_t most = std::min(pass.inEnd - in, pass.outEnd - out - BLOCK);
            std::ptrdiff_t plain = 0;
            while (plain <= most - BLOCK && storePlain(out + plain, in + plain))
                plain += BLOCK;
            in += plain;
            out += plain;
            if (plain > most - BLOCK)
                break;
            while (pass.inEnd - in >= BLOCK && pass.outEnd - out >= 2 * BLOCK && storeShorts(out, in))
                in += BLOCK;
            if (pass.inEnd - in < BLOCK || pass.outEnd - out < 2 * BLOCK)
                break;
        }
        const __m128i units = loadBlock(in);
        const __m128i isSingle = has16(units, 0xFF80, 0);
        const unsigned singles = lanes16(isSingle);
        __m128i isShort = has16(units, 0xF800, 0);
        __m128i shorts = choose(isSingle, units, encodePairs(units));
        const __m128i isSurrogate = has16(units, 0xF800, 0xD800);
        const unsigned surrogates = lanes16(isSurrogate);
        if ((surrogates | open) != 0) {
            const __m128i isLead = has16(units, 0xFC00, 0xD800);
            const unsigned leads = lanes16(isLead);
            const unsigned trails = (leads << 1 | open) & 0xFF; // units that must be trailing surrogates
            if (surrogates != (leads | trails) || (leads & trails) != 0)
                break;
            const __m128i before = _mm_insert_epi16(_mm_slli_si128(units, 2), in[-static_cast<int>(open)], 0);
            shorts = choose(isSurrogate, encodeSurrogates(units, before, isLead), shorts);
            isShort = either(isShort, isSurrogate);
            open = leads >> 7;
        }
        wasShort = surrogates == 0 && lanes16(isShort) == 0xFF;
        out = storeLanes(out, units, shorts, isShort, singles);
        in += 8;
    }
    // The rest of plain text is encoded together with some units before it, for which the same bytes are stored again.
    const std::ptrdiff_t left = pass.inEnd - in;
    if (left > 0 && left < BLOCK && in - pass.in >= BLOCK - left && pass.outEnd - out >= left && open == 0) {
        if (storePlain(out + left - BLOCK, pass.inEnd - BLOCK)) {
            in += left;
            out += left;
        }
    }
    in -= open;
    out -= 2 * open;
    pass.in = in;
    pass.out = out;
}

/// Encodes units up to eight of them with a surrogate, or up to `end`, which at least eight units of the text precede.
VX_USES_SHUFFLE inline void encodeToEnd(const char16_t*& from, const char16_t* end, signed char*& to) noexcept
{
    const char16_t* in = from; // what is stored could be the caller's pointers
    signed char* out = to;
    while (end - in >= BLOCK && storeShorts(out, in))
        in += BLOCK;
    const __m128i last = loadBlock(end - 8);
    while (in < end) {
        const std::ptrdiff_t left = end - in;
        const __m128i units = left >= 8 ? loadBlock(in) : lastBytes(last, 2 * left);
        const __m128i isShort = has16(units, 0xF800, 0);
        if (lanes16(isShort) != 0xFF && lanes8(has16(units, 0xF800, 0xD800)) != 0)
            break;
        const __m128i isSingle = has16(units, 0xFF80, 0);
        out = storeLanes(out, units, choose(isSingle, units, encodePairs(units)), isShort, lanes16(isSingle));
        in += std::min<std::ptrdiff_t>(left, 8);
        out -= std::max<std::ptrdiff_t>(8 - left, 0); // each zero after the end is one byte
    }
    from = in;
    to = out;
}

} // namespace vx::text::charset::detail

#endif

namespace vx::text::charset::detail {

/// Encodes text without lone surrogates with vector instructions, as far as this processor has them.
inline void encodePlain([[maybe_unused]] Encoding& pass) noexcept
{
#if VX_VECTOR_PATHS
    if (hasCompress())
        encodeByLanes(pass);
    if (hasShuffle())
        encodeBlocks(pass);
#endif
}

/// Bytes after those of the text that `encodeSome` may write.
inline constexpr std::ptrdiff_t ENCODE_SPARE = 32;

/// Encodes units from `in` on with vector instructions, up to a surrogate near by, or up to `end`. The text begins with
/// `start`. `out` has room for three bytes a unit and ENCODE_SPARE.
inline void encodeSome([[maybe_unused]] const char16_t* start, [[maybe_unused]] const char16_t*& in,
    [[maybe_unused]] const char16_t* end, [[maybe_unused]] signed char*& out) noexcept
{
#if VX_VECTOR_PATHS
    if (end - start >= 8 && hasShuffle())
        encodeToEnd(in, end, out);
#endif
}

} // namespace vx::text::charset::detail
