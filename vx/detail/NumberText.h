#pragma once

#include "vxsys/detail/Vector.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>

#if VX_VECTOR_PATHS
#include <emmintrin.h>
#endif

namespace vx::detail {

/// A number as `printf` prints it in the C locale: whole numbers with "%d", floating-point numbers with "%g".
class NumberText {
public:
    template <std::integral Number>
    explicit NumberText(Number value) noexcept
    {
        if (std::signed_integral<Number> && value < 0)
            printWhole(0 - static_cast<std::uint64_t>(value), true);
        else
            printWhole(static_cast<std::uint64_t>(value), false);
    }
    explicit NumberText(double value) noexcept
    {
        if (!printUsual(value))
            printAny(value);
    }
    NumberText(const NumberText&) = delete;
    NumberText& operator=(const NumberText&) = delete;

    const char16_t* data() const noexcept { return m_start; }
    int length() const noexcept { return m_length; }
    std::u16string_view view() const noexcept { return {m_start, static_cast<std::size_t>(m_length)}; }

private:
    static constexpr int GROUP = 8; ///< digits that are made together
    static constexpr std::uint32_t GROUP_LIMIT = 100'000'000;
    static constexpr int ROOM = 4 * GROUP;
    static constexpr int SIGNIFICANT = 6; ///< digits of a floating-point number
    static constexpr std::uint32_t SIGNIFICANT_LIMIT = 1'000'000;

    /// The eight decimal digits of a number below GROUP_LIMIT, one a byte, the first in the lowest byte. Halves, pairs
    /// and digits are split by multiplications that divide all parts at once.
    static std::uint64_t digitsOf(std::uint32_t value) noexcept
    {
        const std::uint64_t halves = value / 10'000 | std::uint64_t {value % 10'000} << 32;
        const std::uint64_t hundreds = (halves * 10'486 >> 20) & 0x0000'007F'0000'007F;
        const std::uint64_t pairs = hundreds | (halves - 100 * hundreds) << 16;
        const std::uint64_t tens = (pairs * 103 >> 10) & 0x000F'000F'000F'000F;
        return tens | (pairs - 10 * tens) << 8;
    }

    static constexpr std::uint64_t asText(std::uint64_t digits) noexcept { return digits | 0x3030'3030'3030'3030; }

    /// Writes the characters of eight bytes.
    static void store(char16_t* place, std::uint64_t characters) noexcept
    {
#if VX_VECTOR_PATHS
        const __m128i bytes = _mm_cvtsi64_si128(static_cast<long long>(characters));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(place), _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
#else
        for (int index = 0; index < GROUP; ++index)
            place[index] = static_cast<char16_t>(characters >> 8 * index & 0xFF);
#endif
    }

    void printWhole(std::uint64_t magnitude, bool isNegative) noexcept
    {
        char16_t* place = m_units + ROOM - GROUP;
        for (; magnitude >= GROUP_LIMIT; magnitude /= GROUP_LIMIT, place -= GROUP)
            store(place, asText(digitsOf(static_cast<std::uint32_t>(magnitude % GROUP_LIMIT))));
        const std::uint64_t digits = digitsOf(static_cast<std::uint32_t>(magnitude));
        store(place, asText(digits));
        m_start = place + std::countr_zero(digits | std::uint64_t {1} << 56) / 8; // a zero keeps its last digit
        if (isNegative)
            *--m_start = u'-';
        m_length = static_cast<int>(m_units + ROOM - m_start);
    }

    /// Prints a number if a scaled double tells its six digits for certain. Otherwise returns false.
    bool printUsual(double value) noexcept;
    void printAny(double value) noexcept;

    char16_t* m_start = m_units;
    int m_length = 0;
    alignas(16) char16_t m_units[ROOM];
};

inline bool NumberText::printUsual(double value) noexcept
{
    constexpr double LEAST = 1e-15;
    constexpr double LIMIT = 1e22;
    // All are exact, so that one multiplication or division rounds once.
    constexpr double POWERS[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
        1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr double UNCERTAIN = 1e-9; // more than the error of that one operation below SIGNIFICANT_LIMIT

    const auto bits = std::bit_cast<std::uint64_t>(value);
    const bool isNegative = bits >> 63 != 0;
    const double magnitude = isNegative ? -value : value;
    if (!(magnitude >= LEAST && magnitude < LIMIT))
        return false;

    const auto scaled = [&](int exponent) {
        const int places = SIGNIFICANT - 1 - exponent;
        return places >= 0 ? magnitude * POWERS[places] : magnitude / POWERS[-places];
    };
    // The exponent of ten of the highest power of two in the number; 1233 / 4096 is log10(2) closely enough.
    const int binary = static_cast<int>(bits >> 52 & 0x7FF) - 1023;
    int exponent = binary * 1233 >> 12;
    double digits = scaled(exponent);
    if (digits >= SIGNIFICANT_LIMIT)
        digits = scaled(++exponent);
    auto whole = static_cast<std::uint32_t>(digits);
    const double rest = digits - whole;
    if (std::abs(rest - 0.5) < UNCERTAIN)
        return false;
    whole += rest > 0.5 ? 1 : 0;
    if (whole == SIGNIFICANT_LIMIT) {
        whole /= 10;
        ++exponent;
    }

    const std::uint64_t figures = digitsOf(whole) >> 8 * (GROUP - SIGNIFICANT);
    const int count = (std::bit_width(figures) + 7) / 8; // without zeros at the end
    std::uint64_t text = asText(figures);
    const auto insertPoint = [&](int place) {
        const std::uint64_t before = text & ((std::uint64_t {1} << 8 * place) - 1);
        text = before | std::uint64_t {'.'} << 8 * place | text >> 8 * place << 8 * (place + 1);
    };

    char16_t* out = m_units;
    if (exponent >= -4 && exponent < 0) {
        store(out, isNegative ? 0x3030'302E'302D : 0x30'3030'2E30); // "-0.000" or "0.000"
        out += (isNegative ? 2 : 1) - exponent;
        store(out, text);
        out += count;
    } else {
        const int before = exponent < 0 || exponent >= SIGNIFICANT ? 1 : exponent + 1;
        if (count > before)
            insertPoint(before);
        int length = count > before ? count + 1 : before;
        if (isNegative) {
            text = text << 8 | '-';
            ++length;
        }
        store(out, text);
        out += length;
        if (before != exponent + 1) {
            const int distance = std::abs(exponent);
            *out++ = u'e';
            *out++ = exponent < 0 ? u'-' : u'+';
            *out++ = static_cast<char16_t>(u'0' + distance / 10);
            *out++ = static_cast<char16_t>(u'0' + distance % 10);
        }
    }
    m_length = static_cast<int>(out - m_units);
    return true;
}

/// By std::to_chars, which knows no locale.
inline void NumberText::printAny(double value) noexcept
{
    char text[ROOM];
    const char* const end = std::to_chars(text, text + ROOM, value, std::chars_format::general, SIGNIFICANT).ptr;
    std::copy(static_cast<const char*>(text), end, m_units);
    m_length = static_cast<int>(end - text);
}

} // namespace vx::detail
