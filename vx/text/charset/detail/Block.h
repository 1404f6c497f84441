#pragma once

#include "vxsys/detail/Vector.h"

// Sixteen bytes at a time, on processors that can.

#if VX_VECTOR_PATHS

#include <array>
#include <cstddef>
#include <cstdint>
#include <emmintrin.h>
#include <tmmintrin.h>

/// For functions that are called only if `hasShuffle` returns true.
#define VX_USES_SHUFFLE __attribute__((target("ssse3")))

namespace vx::text::charset::detail {

inline constexpr std::ptrdiff_t BLOCK = 16;

/// For each byte of the result, the byte of the block that it comes from; EMPTY makes it 0.
using Shuffle = std::array<std::uint8_t, BLOCK>;
inline constexpr std::uint8_t EMPTY = 0x80;

struct Packing {
    Shuffle shuffle;
    std::uint8_t length; ///< bytes that are kept
};

/// For lanes of `laneBytes` of which the first `lengthOf(lane)` bytes are kept.
template <class LengthOf>
constexpr Packing packingOf(unsigned laneBytes, LengthOf&& lengthOf)
{
    Packing packing {};
    packing.shuffle.fill(EMPTY);
    for (unsigned lane = 0; lane < BLOCK / laneBytes; ++lane) {
        for (unsigned byte = 0; byte < lengthOf(lane); ++byte)
            packing.shuffle[packing.length++] = static_cast<std::uint8_t>(lane * laneBytes + byte);
    }
    return packing;
}

/// Every x86-64 processor has SSE2, but shuffling bytes by a table needs SSSE3.
inline bool hasShuffle() noexcept
{
    return __builtin_cpu_supports("ssse3") != 0;
}

inline __m128i loadBlock(const void* source) noexcept
{
    return _mm_loadu_si128(static_cast<const __m128i*>(source));
}

/// Eight bytes, followed by zeros.
inline __m128i loadHalf(const void* source) noexcept
{
    return _mm_loadl_epi64(static_cast<const __m128i*>(source));
}

inline void storeBlock(void* target, __m128i block) noexcept
{
    _mm_storeu_si128(static_cast<__m128i*>(target), block);
}

VX_USES_SHUFFLE inline __m128i shuffle(__m128i block, const Shuffle& places) noexcept
{
    return _mm_shuffle_epi8(block, loadBlock(places.data()));
}

/// The last `count` bytes of `block`, followed by zeros.
VX_USES_SHUFFLE inline __m128i lastBytes(__m128i block, std::ptrdiff_t count) noexcept
{
    static constexpr std::array<std::uint8_t, 2 * BLOCK> PLACES = [] {
        std::array<std::uint8_t, 2 * BLOCK> places {};
        places.fill(EMPTY);
        for (std::uint8_t byte = 0; byte < BLOCK; ++byte)
            places[byte] = byte;
        return places;
    }();
    return _mm_shuffle_epi8(block, loadBlock(PLACES.data() + BLOCK - count));
}

/// The bits of `block` that `mask` has after a shift to the right, or to the left for a negative one, in lanes of 16 or
/// 32 bits.
template <int shift>
__m128i bits16(__m128i block, int mask) noexcept
{
    const __m128i shifted = shift < 0 ? _mm_slli_epi16(block, -shift) : _mm_srli_epi16(block, shift);
    return _mm_and_si128(shifted, _mm_set1_epi16(static_cast<short>(mask)));
}

template <int shift>
__m128i bits32(__m128i block, int mask) noexcept
{
    const __m128i shifted = shift < 0 ? _mm_slli_epi32(block, -shift) : _mm_srli_epi32(block, shift);
    return _mm_and_si128(shifted, _mm_set1_epi32(mask));
}

template <class... Blocks>
__m128i either(__m128i first, Blocks... others) noexcept
{
    ((first = _mm_or_si128(first, others)), ...);
    return first;
}

/// `yes` where `lanes` are all ones, else `no`.
inline __m128i choose(__m128i lanes, __m128i yes, __m128i no) noexcept
{
    return _mm_or_si128(_mm_and_si128(lanes, yes), _mm_andnot_si128(lanes, no));
}

/// The lanes of 16 bits in which the bits of `mask` are those of `value`.
inline __m128i has16(__m128i block, int mask, int value) noexcept
{
    return _mm_cmpeq_epi16(
        _mm_and_si128(block, _mm_set1_epi16(static_cast<short>(mask))), _mm_set1_epi16(static_cast<short>(value)));
}

/// One bit for each lane of 8, 16 or 32 bits: its highest bit. Lanes of 16 bits are all ones or all zeros.
inline unsigned lanes8(__m128i block) noexcept
{
    return static_cast<unsigned>(_mm_movemask_epi8(block));
}

inline unsigned lanes16(__m128i block) noexcept
{
    return lanes8(_mm_packs_epi16(block, _mm_setzero_si128()));
}

inline unsigned lanes32(__m128i block) noexcept
{
    return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(block)));
}

/// Stores the bytes as 16 units of the same values.
inline void storeWidened(char16_t* target, __m128i bytes) noexcept
{
    const __m128i zero = _mm_setzero_si128();
    storeBlock(target, _mm_unpacklo_epi8(bytes, zero));
    storeBlock(target + 8, _mm_unpackhi_epi8(bytes, zero));
}

} // namespace vx::text::charset::detail

#endif
