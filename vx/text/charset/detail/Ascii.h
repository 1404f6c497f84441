#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vx::text::charset::detail {

/// Widens bytes below 0x80 from `in` to `out`, up to the first other byte or `count`. Returns how many.
inline std::size_t widenAscii(const signed char* in, char16_t* out, std::size_t count) noexcept
{
    std::size_t done = 0;
#if defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    for (; count - done >= 16; done += 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + done));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + done), _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + done + 8), _mm_unpackhi_epi8(bytes, zero));
        if (const int others = _mm_movemask_epi8(bytes); others != 0)
            return done + static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(others)));
    }
#endif
    for (; done < count && in[done] >= 0; ++done)
        out[done] = static_cast<char16_t>(in[done]);
    return done;
}

/// Narrows units of at most 7 bits (or of at most 8, with `limit` 0x100), up to the first other unit or `count`.
template <unsigned limit = 0x80>
std::size_t narrowUnits(const char16_t* in, signed char* out, std::size_t count) noexcept
{
    std::size_t done = 0;
#if defined(__SSE2__)
    const __m128i others = _mm_set1_epi16(static_cast<short>(~(limit - 1)));
    const __m128i zero = _mm_setzero_si128();
    const __m128i low = _mm_set1_epi16(0xFF);
    for (; count - done >= 16; done += 16) {
        const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + done));
        const __m128i second = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + done + 8));
        const __m128i fits = _mm_cmpeq_epi16(_mm_and_si128(_mm_or_si128(first, second), others), zero);
        if (_mm_movemask_epi8(fits) != 0xFFFF)
            break;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + done),
            _mm_packus_epi16(_mm_and_si128(first, low), _mm_and_si128(second, low)));
    }
#endif
    for (; done < count && in[done] < limit; ++done)
        out[done] = static_cast<signed char>(in[done]);
    return done;
}

/// Widens every byte to the unit of the same value.
inline void widenLatin1(const signed char* in, char16_t* out, std::size_t count) noexcept
{
    for (std::size_t index = 0; index < count; ++index) // a loop that the compiler vectorises
        out[index] = static_cast<unsigned char>(in[index]);
}

} // namespace vx::text::charset::detail
