#pragma once

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/String.h"

#include <bitset>

namespace vx::io::detail {

/// Without I, O, 0 and 1, which are easily confused.
inline constexpr const char16_t* ALPHABET = u"ABCDEFGHJKLMNPQRSTUVWXYZ23456789";

/// The given alphabet, or the one above for null. Throws ResultException unless it has 32 different characters of one
/// byte each.
inline String alphabetOrDefault(const char16_t* alphabet)
{
    constexpr int SIZE = 32;
    String text(alphabet != nullptr ? alphabet : ALPHABET);
    std::bitset<256> seen;
    for (const char16_t unit : text.view()) {
        if (unit < seen.size())
            seen.set(unit);
    }
    if (text.getLength() != SIZE || seen.count() != SIZE)
        throwResult(RESULT_INVALID_ARGUMENT);
    return text;
}

} // namespace vx::io::detail
