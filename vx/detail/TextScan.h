#pragma once

#include "vxsys/detail/Vector.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#if VX_VECTOR_PATHS
#include <emmintrin.h>
#endif

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

/// Units that fit in a vector.
inline constexpr int UNIT_BLOCK = 8;

#if VX_VECTOR_PATHS

inline __m128i loadUnits(const char16_t* units) noexcept
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
}

/// Two bits for each of eight units: both set if the lane is all ones.
inline unsigned laneBits(__m128i lanes) noexcept
{
    return static_cast<unsigned>(_mm_movemask_epi8(lanes));
}

/// The bits of the units at which two blocks differ.
inline unsigned differingLanes(const char16_t* left, const char16_t* right) noexcept
{
    return laneBits(_mm_cmpeq_epi16(loadUnits(left), loadUnits(right))) ^ 0xFFFF;
}

#endif

/// Whether a pattern may begin at an index: its first and its last unit are there.
struct EndsMatch {
    const char16_t* text;
    const char16_t* ends; ///< the text from the place of the first pattern's last unit on
    char16_t first;
    char16_t last;

    bool operator()(int index) const noexcept { return (text[index] == first) & (ends[index] == last); }
};

#if VX_VECTOR_PATHS

/// The same for eight indices at a time.
class EndsLanes {
public:
    explicit EndsLanes(const EndsMatch& pattern) noexcept
        : m_text(pattern.text)
        , m_ends(pattern.ends)
        , m_first(_mm_set1_epi16(static_cast<short>(pattern.first)))
        , m_last(_mm_set1_epi16(static_cast<short>(pattern.last)))
    {
    }

    unsigned at(int index) const noexcept { return laneBits(lanes(index)); }
    bool hasAny(int index) const noexcept
    {
        return laneBits(_mm_or_si128(lanes(index), lanes(index + UNIT_BLOCK))) != 0;
    }

private:
    __m128i lanes(int index) const noexcept
    {
        return _mm_and_si128(
            _mm_cmpeq_epi16(loadUnits(m_text + index), m_first), _mm_cmpeq_epi16(loadUnits(m_ends + index), m_last));
    }

    const char16_t* m_text;
    const char16_t* m_ends;
    __m128i m_first;
    __m128i m_last;
};

#endif

/// `scanUp` by blocks of eight places.
template <class Matches>
int scanUp(int from, int end, const EndsMatch& pattern, Matches matches) noexcept
{
#if VX_VECTOR_PATHS
    if (end - from >= UNIT_BLOCK) {
        const EndsLanes lanes(pattern);
        while (from < end) {
            if (end - from >= 2 * UNIT_BLOCK && !lanes.hasAny(from)) {
                from += 2 * UNIT_BLOCK;
                continue;
            }
            const int start = std::min(from, end - UNIT_BLOCK); // the last block may begin before `from`
            for (unsigned bits = lanes.at(start) >> 2 * (from - start); bits != 0;) {
                const int offset = std::countr_zero(bits) / 2;
                if (matches(from + offset))
                    return from + offset;
                bits &= ~(3U << 2 * offset);
            }
            from = start + UNIT_BLOCK;
        }
        return -1;
    }
#endif
    return scanUp<EndsMatch, Matches>(from, end, pattern, matches);
}

/// `scanDown` by blocks of eight places.
template <class Matches>
int scanDown(int end, const EndsMatch& pattern, Matches matches) noexcept
{
#if VX_VECTOR_PATHS
    if (end >= UNIT_BLOCK) {
        const EndsLanes lanes(pattern);
        while (end > 0) {
            const int start = std::max(end - UNIT_BLOCK, 0); // the last block may end after `end`
            for (unsigned bits = lanes.at(start) & 0xFFFFU >> 2 * (start + UNIT_BLOCK - end); bits != 0;) {
                const int offset = static_cast<int>(std::bit_width(bits) - 1) / 2;
                if (matches(start + offset))
                    return start + offset;
                bits &= ~(3U << 2 * offset);
            }
            end = start;
        }
        return -1;
    }
#endif
    return scanDown<EndsMatch, Matches>(end, pattern, matches);
}

/// The first place of `unit` in `length` units, or -1.
inline int findUnit(const char16_t* text, int length, char16_t unit) noexcept
{
    int index = 0;
    while (length - index >= SCAN_BLOCK && !mayMatchWithin(index, [=](int place) { return text[place] == unit; }))
        index += SCAN_BLOCK;
#if VX_VECTOR_PATHS
    if (length >= UNIT_BLOCK) {
        const __m128i units = _mm_set1_epi16(static_cast<short>(unit));
        while (index < length) {
            const int start = std::min(index, length - UNIT_BLOCK); // what is looked at twice was no match
            const unsigned bits = laneBits(_mm_cmpeq_epi16(loadUnits(text + start), units));
            if (bits != 0)
                return start + std::countr_zero(bits) / 2;
            index = start + UNIT_BLOCK;
        }
        return -1;
    }
#endif
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
/// The first place at which two texts differ, or `length`.
inline int firstDifference(const char16_t* left, const char16_t* right, int length) noexcept
{
    constexpr int LONG_BLOCK = 128; // for which a call pays
    int index = 0;
    while (length - index >= LONG_BLOCK && std::memcmp(left + index, right + index, LONG_BLOCK * sizeof(char16_t)) == 0)
        index += LONG_BLOCK;
#if VX_VECTOR_PATHS
    if (length >= UNIT_BLOCK) {
        while (length - index >= 2 * UNIT_BLOCK) {
            const unsigned bits = differingLanes(left + index, right + index)
                | differingLanes(left + index + UNIT_BLOCK, right + index + UNIT_BLOCK) << 2 * UNIT_BLOCK;
            if (bits != 0)
                return index + std::countr_zero(bits) / 2;
            index += 2 * UNIT_BLOCK;
        }
        while (index < length) {
            const int start = std::min(index, length - UNIT_BLOCK); // what is looked at twice did not differ
            const unsigned bits = differingLanes(left + start, right + start);
            if (bits != 0)
                return start + std::countr_zero(bits) / 2;
            index = start + UNIT_BLOCK;
        }
        return length;
    }
#endif
    while (length - index >= UNITS_AT_ONCE && differingBits(left + index, right + index) == 0)
        index += UNITS_AT_ONCE;
    while (index < length && left[index] == right[index])
        ++index;
    return index;
}

/// -1, 0 or 1 by unit value.
inline int compareUnits(const char16_t* left, const char16_t* right, int length) noexcept
{
    const int place = firstDifference(left, right, length);
    return place == length ? 0 : left[place] < right[place] ? -1 : 1;
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
