#pragma once

#include "vx/detail/TextHash.h"
#include "vx/detail/TextRange.h"
#include "vxsys/Text.h"

#include <algorithm>
#include <cstdint>

namespace vx::detail {

/// The units that a search looks for. A table has one bit for each value of a low byte. It decides for all units below
/// 256 and refuses nearly all others, so most units cost one look. The units must outlive the set.
class UnitSet {
public:
    UnitSet(const char16_t* units, int length, bool ignoreCase) noexcept;

    bool isEmpty() const noexcept { return m_length == 0; }
    bool contains(char16_t unit) const noexcept
    {
        return unit < LATIN ? isSet(m_latin, unit) : containsOther(folded(unit));
    }

private:
    static constexpr char16_t LATIN = 256;
    static constexpr int WORD_BITS = 64;
    using Bits = std::uint64_t[LATIN / WORD_BITS];

    static bool isSet(const Bits& bits, char16_t unit) noexcept
    {
        return (bits[unit % LATIN / WORD_BITS] >> unit % WORD_BITS & 1) != 0;
    }
    static void set(Bits& bits, char16_t unit) noexcept
    {
        bits[unit % LATIN / WORD_BITS] |= std::uint64_t {1} << unit % WORD_BITS;
    }

    char16_t folded(char16_t unit) const noexcept { return m_ignoreCase ? lowerUnit(unit) : unit; }
    void add(char16_t unit) noexcept { set(unit < LATIN ? m_latin : m_others, unit); }
    bool containsOther(char16_t unit) const noexcept;

    const char16_t* m_units;
    int m_length;
    bool m_ignoreCase;
    Bits m_latin = {};
    Bits m_others = {}; ///< indexed by the low byte of folded units
};

inline UnitSet::UnitSet(const char16_t* units, int length, bool ignoreCase) noexcept
    : m_units(units)
    , m_length(measured(units, length))
    , m_ignoreCase(ignoreCase)
{
    for (int index = 0; index < m_length; ++index) {
        const char16_t unit = folded(m_units[index]);
        add(unit);
        if (ignoreCase && folded(VXToUpperW(unit)) == unit)
            add(VXToUpperW(unit));
    }
}

inline bool UnitSet::containsOther(char16_t unit) const noexcept
{
    if (!isSet(unit < LATIN ? m_latin : m_others, unit)) // a unit from 256 on may have its other case below 256
        return false;
    return std::any_of(m_units, m_units + m_length, [&](char16_t candidate) { return folded(candidate) == unit; });
}

} // namespace vx::detail
