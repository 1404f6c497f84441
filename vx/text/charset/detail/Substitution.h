#pragma once

#include "vx/text/charset/CharsetException.h"
#include "vx/text/charset/detail/Pass.h"

#include <algorithm>

namespace vx::text::charset::detail {

inline constexpr const char16_t* LEAD_WITHOUT_TRAIL = u"leading surrogate without trailing";

/// Stores the whole substitution, or throws if substitution is off. Returns false if there is no room for it and for
/// `spare` more units.
template <class Pass, class Unit>
bool storeSubstitution(Pass& pass, bool mode, const Unit* units, int length, int spare)
{
    if (!mode)
        throw UnmappableCharacterException();
    if (length > pass.room() - spare)
        return false;
    pass.out = std::copy_n(units, length, pass.out);
    return true;
}

/// Stores a character of a UTF decoder, which has room for one unit. `substitute` is called for a value above the last
/// code point. Returns false if there is no room.
template <class Substitute>
bool storeCharacter(Decoding& pass, std::uint32_t value, Substitute substitute)
{
    if (value <= 0xFFFF) {
        *pass.out++ = static_cast<char16_t>(value);
        return true;
    }
    return value > LAST_CODE_POINT ? substitute() : storePair(pass, value);
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
