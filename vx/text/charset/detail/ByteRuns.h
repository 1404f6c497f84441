#pragma once

#include "vx/text/charset/detail/Block.h"
#include "vx/text/charset/detail/Unicode.h"
#include "vxsys/detail/Vector.h"

#include <bit>
#include <cstddef>
#include <cstdint>

namespace vx::text::charset::detail {

/// Which bytes of an encoding mean the character of the same value.
enum class Itself {
    NONE,
    ASCII,
    ALL,
    ALL_BUT_C1, ///< except 0x80 to 0x9F
};

template <Itself itself>
constexpr bool isItself(std::uint32_t value) noexcept
{
    if constexpr (itself == Itself::NONE)
        return false;
    else if constexpr (itself == Itself::ASCII)
        return value < 0x80;
    else if constexpr (itself == Itself::ALL)
        return value < 0x100;
    else
        return value < 0x80 || value - 0xA0 < 0x60;
}

#if VX_VECTOR_PATHS

/// One bit for each byte for which that is true.
template <Itself itself>
unsigned bytesThemselves(__m128i bytes) noexcept
{
    if constexpr (itself == Itself::ASCII)
        return lanes8(bytes) ^ 0xFFFF;
    else if constexpr (itself == Itself::ALL)
        return 0xFFFF;
    else
        return lanes8(_mm_cmplt_epi8(bytes, _mm_set1_epi8(-0x60))) ^ 0xFFFF;
}

/// The lanes of 16 bits for which that is true.
template <Itself itself>
__m128i unitsThemselves(__m128i units) noexcept
{
    if constexpr (itself == Itself::ASCII)
        return has16(units, 0xFF80, 0);
    else if constexpr (itself == Itself::ALL)
        return has16(units, 0xFF00, 0);
    else
        return _mm_andnot_si128(has16(units, 0xE0, 0x80), has16(units, 0xFF00, 0));
}

#endif

/// The character of a byte in ASCII.
constexpr char16_t asciiCharacter(signed char byte) noexcept
{
    return byte >= 0 ? static_cast<char16_t>(byte) : REPLACEMENT;
}

#if VX_VECTOR_PATHS

/// The 16 bytes at `in`, or 8 of them followed by zeros.
template <std::ptrdiff_t size>
__m128i loadBytes(const signed char* in) noexcept
{
    if constexpr (size < BLOCK)
        return loadHalf(in);
    else
        return loadBlock(in);
}

/// Decodes pieces of `size` bytes up to `count`. Stops at the first byte without a character and returns false. `size`
/// is 8, or a multiple of 16 up to 64.
template <Itself itself, std::ptrdiff_t size, class CharacterOf>
bool decodeStretches(const signed char* in, char16_t* out, std::ptrdiff_t count, std::ptrdiff_t& done,
    const CharacterOf& characterOf) noexcept
{
    for (; count - done >= size; done += size) {
        std::uint64_t others = 0;
        for (std::ptrdiff_t at = 0; at < size; at += BLOCK) {
            const __m128i bytes = loadBytes<size>(in + done + at);
            if constexpr (size < BLOCK)
                storeBlock(out + done, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
            else
                storeWidened(out + done + at, bytes);
            others |= std::uint64_t {bytesThemselves<itself>(bytes) ^ 0xFFFF} << at;
        }
        for (; others != 0; others &= others - 1) {
            const std::ptrdiff_t at = done + std::countr_zero(others);
            const char16_t unit = characterOf(in[at]);
            if (unit == REPLACEMENT) {
                done = at;
                return false;
            }
            out[at] = unit;
        }
    }
    return true;
}

#endif

/// Decodes bytes up to `count`, or up to the first one for which `characterOf` has no character. Returns how many. All
/// `count` units of `out` may be written.
template <Itself itself, class CharacterOf>
std::ptrdiff_t decodeRun(
    const signed char* in, char16_t* out, std::ptrdiff_t count, const CharacterOf& characterOf) noexcept
{
    std::ptrdiff_t done = 0;
#if VX_VECTOR_PATHS
    // Fewer loop ends mean fewer mispredicted branches.
    if (!decodeStretches<itself, 4 * BLOCK>(in, out, count, done, characterOf)
        || !decodeStretches<itself, BLOCK>(in, out, count, done, characterOf)
        || !decodeStretches<itself, BLOCK / 2>(in, out, count, done, characterOf))
        return done;
#endif
    for (; done < count; ++done) {
        const char16_t unit = characterOf(in[done]);
        if (unit == REPLACEMENT)
            break;
        out[done] = unit;
    }
    return done;
}

/// Converts units to bytes of the same value, up to `count` or the first unit that has no such byte. Returns how many.
/// All `count` bytes of `out` may be written.
template <Itself itself>
std::ptrdiff_t narrowRun(const char16_t* in, signed char* out, std::ptrdiff_t count) noexcept
{
    std::ptrdiff_t done = 0;
#if VX_VECTOR_PATHS
    const __m128i low = _mm_set1_epi16(0xFF);
    for (; count - done >= BLOCK; done += BLOCK) {
        const __m128i first = loadBlock(in + done);
        const __m128i second = loadBlock(in + done + 8);
        storeBlock(out + done, _mm_packus_epi16(_mm_and_si128(first, low), _mm_and_si128(second, low)));
        const unsigned good = lanes8(_mm_packs_epi16(unitsThemselves<itself>(first), unitsThemselves<itself>(second)));
        if (good != 0xFFFF)
            return done + std::countr_one(good);
    }
#endif
    for (; done < count && isItself<itself>(in[done]); ++done)
        out[done] = static_cast<signed char>(in[done]);
    return done;
}

/// Converts units below 0x80 to bytes. If there are others, returns false, and what `out` holds then has no meaning.
inline bool narrowIfAscii(const char16_t* in, signed char* out, std::ptrdiff_t count) noexcept
{
    unsigned others = 0;
    std::ptrdiff_t done = 0;
#if VX_VECTOR_PATHS
    if (count >= BLOCK) {
        __m128i all = _mm_setzero_si128();
        const auto narrow = [&](std::ptrdiff_t at) {
            const __m128i first = loadBlock(in + at);
            const __m128i second = loadBlock(in + at + 8);
            storeBlock(out + at, _mm_packus_epi16(first, second));
            all = either(all, first, second);
        };
        const std::ptrdiff_t last = count - BLOCK;
        for (; done < last; done += BLOCK)
            narrow(done);
        narrow(last); // may overlap the one before
        return lanes8(has16(all, 0xFF80, 0)) == 0xFFFF;
    }
#endif
    for (; done < count; ++done) {
        out[done] = static_cast<signed char>(in[done]);
        others |= in[done];
    }
    return others < 0x80;
}

} // namespace vx::text::charset::detail
