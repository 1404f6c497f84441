#pragma once

#include "vx/text/charset/CharsetException.h"

#include <algorithm>

namespace vx::text::charset::detail {

inline constexpr const char16_t* LEAD_WITHOUT_TRAIL = u"leading surrogate without trailing";

/// Stores the substitution of a UTF decoder for a value above the last code point. Returns false if there is no room
/// for it and one more unit.
template <class Pass, class Unit>
bool storeSubstitution(Pass& pass, bool mode, const Unit* units, int length)
{
    if (!mode)
        throw UnmappableCharacterException();
    if (length >= pass.room())
        return false;
    pass.out = std::copy_n(units, length, pass.out);
    return true;
}

inline void throwIfHeld(char16_t lead)
{
    if (lead != 0)
        throw InvalidCharacterException(LEAD_WITHOUT_TRAIL);
}

/// Implements `getSubstitution...`.
template <class Unit>
int copySubstitution(const Unit* held, int heldLength, Unit* target, int length) noexcept
{
    if (target == nullptr)
        return heldLength;
    const int count = std::clamp(length, 0, heldLength);
    std::copy_n(held, count, target);
    return count;
}

/// Copies as much as fits into `held`. The length becomes the number copied.
template <class Unit, std::size_t size>
int takeSubstitution(Unit (&held)[size], const Unit* units, int length) noexcept
{
    const int count = units != nullptr ? std::clamp(length, 0, static_cast<int>(size)) : 0;
    std::copy_n(units, count, held);
    return count;
}

} // namespace vx::text::charset::detail
