#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace vx::detail {

/// Units looked at together: a fixed number, without branches, lets the compiler use vector instructions.
inline constexpr int SCAN_BLOCK = 32;

template <class MayMatch>
bool mayMatchWithin(int index, MayMatch mayMatch) noexcept
{
    std::uint16_t found = 0;
    for (int offset = 0; offset < SCAN_BLOCK; ++offset)
        found = static_cast<std::uint16_t>(found | (mayMatch(index + offset) ? 1 : 0));
    return found != 0;
}

/// The first index from `from` up to, but not including, `end` that matches, or -1. `mayMatch` is a quick look that lets
/// no match pass.
template <class MayMatch, class Matches>
int scanUp(int from, int end, MayMatch mayMatch, Matches matches) noexcept
{
    int index = from;
    while (index < end) {
        const int stop = end - index >= SCAN_BLOCK ? index + SCAN_BLOCK : end;
        if (stop - index == SCAN_BLOCK && !mayMatchWithin(index, mayMatch)) {
            index = stop;
            continue;
        }
        for (; index < stop; ++index) {
            if (mayMatch(index) && matches(index))
                return index;
        }
    }
    return -1;
}

/// The last index from 0 up to, but not including, `end` that matches, or -1.
template <class MayMatch, class Matches>
int scanDown(int end, MayMatch mayMatch, Matches matches) noexcept
{
    while (end > 0) {
        const int stop = end >= SCAN_BLOCK ? end - SCAN_BLOCK : 0;
        if (end - stop == SCAN_BLOCK && !mayMatchWithin(stop, mayMatch)) {
            end = stop;
            continue;
        }
        while (end > stop) {
            --end;
            if (mayMatch(end) && matches(end))
                return end;
        }
    }
    return -1;
}

/// The first place of `unit` in `length` units, or -1.
inline int findUnit(const char16_t* text, int length, char16_t unit) noexcept
{
    int index = 0;
    while (length - index >= SCAN_BLOCK && !mayMatchWithin(index, [=](int place) { return text[place] == unit; }))
        index += SCAN_BLOCK;
    if constexpr (std::endian::native == std::endian::little) { // four at once: the lowest unit that is 0 borrows first
        constexpr std::uint64_t ONES = 0x0001'0001'0001'0001;
        for (std::uint64_t units = 0; length - index >= 4; index += 4) {
            std::memcpy(&units, text + index, sizeof units);
            units ^= ONES * unit;
            const std::uint64_t borrows = (units - ONES) & ~units & ONES << 15;
            if (borrows != 0)
                return index + std::countr_zero(borrows) / 16;
        }
    }
    while (index < length && text[index] != unit)
        ++index;
    return index < length ? index : -1;
}

/// Four units of each text, with the bits set in which they differ.
inline std::uint64_t differingBits(const char16_t* left, const char16_t* right) noexcept
{
    std::uint64_t leftUnits = 0;
    std::uint64_t rightUnits = 0;
    std::memcpy(&leftUnits, left, sizeof leftUnits);
    std::memcpy(&rightUnits, right, sizeof rightUnits);
    return leftUnits ^ rightUnits;
}

inline constexpr int UNITS_AT_ONCE = sizeof(std::uint64_t) / sizeof(char16_t);

/// -1, 0 or 1 by unit value.
inline int compareUnits(const char16_t* left, const char16_t* right, int length) noexcept
{
    constexpr int BLOCK = 32;
    int index = 0;
    while (length - index >= BLOCK && std::memcmp(left + index, right + index, BLOCK * sizeof(char16_t)) == 0)
        index += BLOCK;
    while (length - index >= UNITS_AT_ONCE && differingBits(left + index, right + index) == 0)
        index += UNITS_AT_ONCE;
    for (; index < length; ++index) {
        if (left[index] != right[index])
            return left[index] < right[index] ? -1 : 1;
    }
    return 0;
}

inline bool equalUnits(const char16_t* left, const char16_t* right, int length) noexcept
{
    constexpr int LONG_TEXT = 32;
    if (length > LONG_TEXT)
        return std::memcmp(left, right, static_cast<std::size_t>(length) * sizeof(char16_t)) == 0;
    if (length < UNITS_AT_ONCE) {
        for (int index = 0; index < length; ++index) {
            if (left[index] != right[index])
                return false;
        }
        return true;
    }
    for (int index = 0; index < length - UNITS_AT_ONCE; index += UNITS_AT_ONCE) {
        if (differingBits(left + index, right + index) != 0)
            return false;
    }
    return differingBits(left + length - UNITS_AT_ONCE, right + length - UNITS_AT_ONCE)
        == 0; // may overlap the one before
}

} // namespace vx::detail
