#pragma once

#include "vx/text/charset/detail/Block.h"
#include "vx/text/charset/detail/Pass.h"
#include "vx/text/charset/detail/Utf8DecodeLanes.h"
#include "vxsys/detail/Vector.h"

namespace vx::text::charset::detail {

/// `decodePlain` needs at least this many bytes.
inline constexpr std::ptrdiff_t PLAIN_BYTES = 80;

} // namespace vx::text::charset::detail

#if VX_VECTOR_PATHS

#include <algorithm>
#include <bit>

namespace vx::text::charset::detail {

// After Lemire and Muła, "Transcoding billions of Unicode characters per second with SIMD instructions" (2022): the
// ends of characters are found for 64 bytes at once, as bits. Twelve of these bits select how the next bytes are
// shuffled, so that each character gets its own lane. Windows without characters of four bytes need no such steps.

inline constexpr int WINDOW = 64;
inline constexpr int LOOKED_AT = 12; ///< bits that a step uses
static_assert(PLAIN_BYTES == WINDOW + BLOCK); // a step near the end of the window loads a whole block

/// Steps decode up to eight characters of up to two bytes, or four of up to three, or three of up to four. The number
/// of a shuffle has the lengths of the characters as its digits, the first one lowest. Lanes after the characters do
/// not matter: what they store is overwritten.
struct StepKind {
    unsigned first; ///< the number of its first shuffle
    unsigned last; ///< and of the one after its last
    unsigned characters;
    unsigned longest;
    unsigned lane; ///< bytes that a shuffle gives to each character
};
inline constexpr StepKind PAIRS {0, 256, 8, 2, 2};
inline constexpr StepKind TRIPLES {256, 337, 4, 3, 4};
inline constexpr StepKind QUADS {337, 401, 3, 4, 4};

struct Step {
    std::uint16_t shuffle;
    std::uint8_t bytes; ///< how many bytes it reads
    std::uint8_t characters;
};

/// The step of `kind`, up to a character that is too long for it or ends too late. Bit i of `ends` is set if a
/// character ends with byte i.
constexpr Step stepOf(const StepKind& kind, unsigned ends)
{
    unsigned number = kind.first;
    unsigned bytes = 0;
    unsigned characters = 0;
    for (unsigned digit = 1; characters < kind.characters; ++characters, digit *= kind.longest) {
        const auto length = static_cast<unsigned>(std::countr_zero(ends >> bytes | 1U << LOOKED_AT)) + 1;
        if (length > kind.longest)
            break;
        number += (length - 1) * digit;
        bytes += length;
    }
    return {
        static_cast<std::uint16_t>(number), static_cast<std::uint8_t>(bytes), static_cast<std::uint8_t>(characters)};
}

inline constexpr auto STEPS = [] {
    std::array<Step, 1 << LOOKED_AT> steps {};
    for (unsigned ends = 0; ends < steps.size(); ++ends) {
        for (const StepKind& kind : {PAIRS, TRIPLES, QUADS}) {
            if (const Step step = stepOf(kind, ends); step.bytes > steps[ends].bytes)
                steps[ends] = step;
        }
    }
    return steps;
}();

/// Moves each character to its own lane, its last byte first.
inline constexpr auto DECODE_SHUFFLES = [] {
    std::array<Shuffle, QUADS.last> shuffles {};
    for (const StepKind& kind : {PAIRS, TRIPLES, QUADS}) {
        for (unsigned index = kind.first; index < kind.last; ++index) {
            shuffles[index].fill(EMPTY);
            unsigned rest = index - kind.first;
            unsigned end = 0;
            for (unsigned character = 0; character < kind.characters; ++character, rest /= kind.longest) {
                const unsigned length = rest % kind.longest + 1;
                end += length;
                for (unsigned byte = 0; byte < length; ++byte)
                    shuffles[index][character * kind.lane + byte] = static_cast<std::uint8_t>(end - 1 - byte);
            }
        }
    }
    return shuffles;
}();

/// Eight units, by the bits of those that are kept.
inline constexpr auto DECODE_KEEPS = [] {
    std::array<Packing, 256> keeps {};
    for (unsigned kept = 0; kept < keeps.size(); ++kept)
        keeps[kept] = packingOf(2, [=](unsigned lane) { return 2 * (kept >> lane & 1); });
    return keeps;
}();

/// How three lanes of 32 bits become adjacent units, by the bits of the lanes that hold a pair.
inline constexpr auto DECODE_PACKS = [] {
    std::array<Shuffle, 8> packs {};
    for (unsigned pairs = 0; pairs < packs.size(); ++pairs) {
        packs[pairs].fill(EMPTY);
        std::size_t to = 0;
        for (unsigned lane = 0; lane < 3; ++lane) {
            const unsigned bytes = (pairs >> lane & 1) != 0 ? 4 : 2;
            for (unsigned byte = 0; byte < bytes; ++byte)
                packs[pairs][to++] = static_cast<std::uint8_t>(4 * lane + byte);
        }
    }
    return packs;
}();

inline constexpr Shuffle DECODE_PACK_UNITS {
    0, 1, 4, 5, 8, 9, 12, 13, EMPTY, EMPTY, EMPTY, EMPTY, EMPTY, EMPTY, EMPTY, EMPTY};

/// 64 bytes with tests: some return one bit for each byte, others whether any byte passes.
class Window {
public:
    explicit Window(const signed char* bytes) noexcept
        : m_blocks {
            loadBlock(bytes), loadBlock(bytes + BLOCK), loadBlock(bytes + 2 * BLOCK), loadBlock(bytes + 3 * BLOCK)}
    {
    }

    std::uint64_t notAscii() const noexcept
    {
        return gather([](__m128i block) { return block; });
    }
    /// From 0x80 on, but below `limit`.
    std::uint64_t below(int limit) const noexcept
    {
        const __m128i limits = _mm_set1_epi8(static_cast<char>(limit));
        return gather([&](__m128i block) { return _mm_cmplt_epi8(block, limits); });
    }
    std::uint64_t equal(int byte) const noexcept
    {
        const __m128i bytes = _mm_set1_epi8(static_cast<char>(byte));
        return gather([&](__m128i block) { return _mm_cmpeq_epi8(block, bytes); });
    }
    /// Whether any byte is from `first` up to `last`, which are 0x80 or more.
    bool hasAny(int first, int last) const noexcept;

    void storeAscii(char16_t* out) const noexcept
    {
        for (int index = 0; index < 4; ++index)
            storeWidened(out + index * BLOCK, m_blocks[index]);
    }

private:
    template <class Test>
    std::uint64_t gather(Test&& test) const noexcept;

    __m128i m_blocks[4];
};

inline bool Window::hasAny(int first, int last) const noexcept
{
    const __m128i firsts = _mm_set1_epi8(static_cast<char>(first));
    const __m128i least
        = _mm_min_epu8(_mm_min_epu8(_mm_sub_epi8(m_blocks[0], firsts), _mm_sub_epi8(m_blocks[1], firsts)),
            _mm_min_epu8(_mm_sub_epi8(m_blocks[2], firsts), _mm_sub_epi8(m_blocks[3], firsts)));
    const __m128i distance = _mm_set1_epi8(static_cast<char>(last - first));
    return lanes8(_mm_cmpeq_epi8(_mm_min_epu8(least, distance), least)) != 0;
}

template <class Test>
std::uint64_t Window::gather(Test&& test) const noexcept
{
    std::uint64_t bits = 0;
    for (int index = 0; index < 4; ++index)
        bits |= std::uint64_t {lanes8(test(m_blocks[index]))} << index * BLOCK;
    return bits;
}

/// Whether all sequences are well-formed, apart from one that is incomplete at the end. Overlong forms of three bytes
/// are accepted.
inline bool isPlain(const Window& window, std::uint64_t notAscii, std::uint64_t followers) noexcept
{
    std::uint64_t expected = (notAscii & ~followers) << 1;
    if (window.hasAny(0xE0, 0xFF)) {
        expected |= (notAscii & ~window.below(0xE0)) << 2;
        if (window.hasAny(0xED, 0xED) && (window.equal(0xED) & (followers & ~window.below(0xA0)) >> 1) != 0)
            return false;
        if (window.hasAny(0xF0, 0xFF)) {
            expected |= (notAscii & ~window.below(0xF0)) << 3;
            const std::uint64_t low = window.below(0x90);
            if (window.hasAny(0xF5, 0xFF)
                || ((window.equal(0xF0) & low >> 1) | (window.equal(0xF4) & (followers & ~low) >> 1)) != 0)
                return false;
        }
    }
    return expected == followers && !window.hasAny(0xC0, 0xC1);
}

/// Characters of up to two bytes.
inline void decodePairs(__m128i lanes, char16_t* out) noexcept
{
    storeBlock(out, either(bits16<0>(lanes, 0x7F), bits16<2>(lanes, 0x7C0)));
}

/// Characters of up to three bytes.
VX_USES_SHUFFLE inline void decodeTriples(__m128i lanes, char16_t* out) noexcept
{
    const __m128i values = either(bits32<0>(lanes, 0x7F), bits32<2>(lanes, 0xFC0), bits32<4>(lanes, 0xF000));
    storeBlock(out, shuffle(values, DECODE_PACK_UNITS));
}

/// Three characters of up to four bytes. Returns how many of them are pairs of units.
VX_USES_SHUFFLE inline unsigned decodeQuads(__m128i lanes, char16_t* out) noexcept
{
    // A first byte in the third position has one bit more than a continuation byte.
    const __m128i third = _mm_xor_si128(bits32<4>(lanes, 0x3F000), bits32<5>(lanes, 0x20000));
    const __m128i values = either(bits32<0>(lanes, 0x7F), bits32<2>(lanes, 0xFC0), third, bits32<6>(lanes, 0x1C0000));
    const __m128i isPair = _mm_cmpgt_epi32(values, _mm_set1_epi32(0xFFFF));
    const __m128i offsets = _mm_sub_epi32(values, _mm_set1_epi32(0x10000));
    const __m128i pairs = either(
        bits32<10>(offsets, 0x3FF), bits32<-16>(offsets, 0x3FF0000), _mm_set1_epi32(static_cast<int>(0xDC00D800)));
    const unsigned isPairBits = lanes32(isPair) & 7;
    storeBlock(out, shuffle(choose(isPair, pairs, values), DECODE_PACKS[isPairBits]));
    return (isPairBits & 1) + (isPairBits >> 1 & 1) + (isPairBits >> 2);
}

/// Decodes a window of characters of up to three bytes, or only up to two. Each byte becomes a unit together with the bytes
/// after it; those of the bytes in `begins` are kept. Reads two bytes after the window.
template <bool hasTriples>
VX_USES_SHUFFLE inline char16_t* decodeBasic(const signed char* in, std::uint64_t begins, char16_t* out) noexcept
{
    const __m128i weights = _mm_set1_epi16(0x0140); // 64 for a byte, 1 for the one after it
    for (int at = 0; at < WINDOW; at += 8, begins >>= 8) {
        const __m128i first = loadHalf(in + at);
        const __m128i second = loadHalf(in + at + 1);
        const __m128i both = _mm_unpacklo_epi8(first, second);
        const __m128i singles = _mm_and_si128(both, _mm_set1_epi16(0xFF));
        const __m128i pairs = _mm_maddubs_epi16(_mm_and_si128(both, _mm_set1_epi16(0x3F1F)), weights);
        __m128i units = choose(_mm_cmpgt_epi16(singles, _mm_set1_epi16(0xBF)), pairs, singles);
        if constexpr (hasTriples) {
            const __m128i last = _mm_and_si128(_mm_unpacklo_epi8(second, loadHalf(in + at + 2)), _mm_set1_epi8(0x3F));
            const __m128i triples = either(_mm_slli_epi16(singles, 12), _mm_maddubs_epi16(last, weights));
            units = choose(_mm_cmpgt_epi16(singles, _mm_set1_epi16(0xDF)), triples, units);
        }
        const Packing& keep = DECODE_KEEPS[begins & 0xFF];
        storeBlock(out, shuffle(units, keep.shuffle));
        out += keep.length / 2;
    }
    return out;
}

/// Decodes until a window has a fault, or near an end.
VX_USES_SHUFFLE inline void decodeBlocks(Decoding& pass) noexcept
{
    const signed char* in = pass.in;
    char16_t* out = pass.out;
    while (pass.inEnd - in >= PLAIN_BYTES && pass.outEnd - out >= WINDOW + BLOCK) {
        const Window window(in);
        const std::uint64_t notAscii = window.notAscii();
        if (notAscii == 0) {
            window.storeAscii(out);
            in += WINDOW;
            out += WINDOW;
            continue;
        }
        const std::uint64_t followers = window.below(0xC0);
        if (!isPlain(window, notAscii, followers))
            break;
        if (!window.hasAny(0xF0, 0xFF)) {
            const auto byteAt = [&](int index) { return static_cast<std::uint8_t>(in[index]); };
            const int open = byteAt(WINDOW - 1) >= 0xC0 ? 1 : byteAt(WINDOW - 2) >= 0xE0 ? 2 : 0;
            const std::uint64_t begins = ~followers & ~std::uint64_t {0} >> open;
            out = window.hasAny(0xE0, 0xFF) ? decodeBasic<true>(in, begins, out) : decodeBasic<false>(in, begins, out);
            in += WINDOW - open;
            continue;
        }
        const std::uint64_t ends = ~followers >> 1;
        int at = 0;
        while (at < WINDOW - LOOKED_AT) { // the byte after those of a step shows that a character ends
            const __m128i bytes = loadBlock(in + at);
            if (at <= WINDOW - BLOCK && (notAscii >> at & 0xFFFF) == 0) {
                storeWidened(out, bytes);
                out += BLOCK;
                at += BLOCK;
                continue;
            }
            const Step step = STEPS[ends >> at & ((1U << LOOKED_AT) - 1)];
            const __m128i lanes = shuffle(bytes, DECODE_SHUFFLES[step.shuffle]);
            if (step.shuffle < TRIPLES.first)
                decodePairs(lanes, out);
            else if (step.shuffle < QUADS.first)
                decodeTriples(lanes, out);
            else
                out += decodeQuads(lanes, out);
            out += step.characters;
            at += step.bytes;
        }
        in += at;
    }
    pass.in = in;
    pass.out = out;
}

} // namespace vx::text::charset::detail

#endif

namespace vx::text::charset::detail {

/// Decodes well-formed text with vector instructions, as far as this processor has them.
inline void decodePlain([[maybe_unused]] Decoding& pass) noexcept
{
#if VX_VECTOR_PATHS
    if (hasCompress())
        decodeByLanes(pass);
    if (hasShuffle())
        decodeBlocks(pass);
#endif
}

} // namespace vx::text::charset::detail
