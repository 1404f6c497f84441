#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

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

    std::u16string_view view() const noexcept { return {m_start, static_cast<std::size_t>(m_length)}; }

private:
    static constexpr int ROOM = 32;
    static constexpr int SIGNIFICANT = 6; ///< digits of a floating-point number
    static constexpr std::uint32_t SIGNIFICANT_LIMIT = 1'000'000;

    /// "00" to "99". Two digits are stored together.
    static constexpr auto PAIRS = [] {
        std::array<char16_t, 200> units {};
        for (std::size_t index = 0; index < units.size(); ++index)
            units[index] = static_cast<char16_t>(u'0' + (index % 2 == 0 ? index / 20 : index / 2 % 10));
        return units;
    }();

    static char16_t* writePair(char16_t* end, std::uint32_t pair) noexcept
    {
        std::memcpy(end - 2, PAIRS.data() + 2 * pair, 2 * sizeof(char16_t));
        return end - 2;
    }

    /// Writes the digits before `end` and returns where they start.
    static char16_t* writeDigits(char16_t* end, std::uint32_t number) noexcept
    {
        for (; number >= 100; number /= 100)
            end = writePair(end, number % 100);
        if (number >= 10)
            return writePair(end, number);
        *--end = static_cast<char16_t>(u'0' + number);
        return end;
    }

    void printWhole(std::uint64_t magnitude, bool isNegative) noexcept
    {
        char16_t* place = m_units + ROOM;
        for (; magnitude > std::numeric_limits<std::uint32_t>::max(); magnitude /= 100)
            place = writePair(place, static_cast<std::uint32_t>(magnitude % 100));
        m_start = writeDigits(place, static_cast<std::uint32_t>(magnitude));
        if (isNegative)
            *--m_start = u'-';
        m_length = static_cast<int>(m_units + ROOM - m_start);
    }

    /// Prints a number if a scaled double tells its six digits for certain. Otherwise returns false.
    bool printUsual(double value) noexcept;
    void printAny(double value) noexcept;

    char16_t* m_start;
    int m_length;
    char16_t m_units[ROOM];
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

    char16_t* const figures = m_units + ROOM / 2;
    writeDigits(figures + SIGNIFICANT, whole);
    int count = SIGNIFICANT;
    while (figures[count - 1] == u'0')
        --count;
    if (exponent >= -4 && exponent < 0) {
        m_start = figures + exponent - 1;
        std::fill(m_start, figures, u'0');
        m_start[1] = u'.';
        m_length = 1 - exponent + count;
    } else {
        const bool isFixed = exponent >= 0 && exponent < SIGNIFICANT;
        const int before = isFixed ? exponent + 1 : 1; // digits before the point
        m_start = figures;
        m_length = before;
        if (count > before) {
            --m_start;
            for (int index = 0; index < before; ++index)
                m_start[index] = figures[index];
            m_start[before] = u'.';
            m_length = count + 1;
        }
        if (!isFixed) {
            char16_t* const end = m_start + m_length;
            end[0] = u'e';
            end[1] = exponent < 0 ? u'-' : u'+';
            writePair(end + 4, static_cast<std::uint32_t>(std::abs(exponent)));
            m_length += 4;
        }
    }
    if (isNegative) {
        *--m_start = u'-';
        ++m_length;
    }
    return true;
}

/// By std::to_chars, which knows no locale.
inline void NumberText::printAny(double value) noexcept
{
    char text[ROOM];
    const char* const end = std::to_chars(text, text + ROOM, value, std::chars_format::general, SIGNIFICANT).ptr;
    std::copy(static_cast<const char*>(text), end, m_units);
    m_start = m_units;
    m_length = static_cast<int>(end - text);
}

} // namespace vx::detail
