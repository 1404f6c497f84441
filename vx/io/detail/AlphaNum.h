#pragma once

#include "vx/Exception.h"
#include "vx/Result.h"
#include "vx/String.h"

namespace vx::io::detail {

/// Without I, O, 0 and 1, which are taken for each other.
inline constexpr const char16_t* ALPHABET = u"ABCDEFGHJKLMNPQRSTUVWXYZ23456789";

/// The given alphabet of 32 characters; null is the one above.
inline String alphabetOrDefault(const char16_t* alphabet)
{
    constexpr int SIZE = 32;
    String text(alphabet != nullptr ? alphabet : ALPHABET);
    if (text.getLength() != SIZE)
        throwResult(RESULT_INVALID_ARGUMENT);
    return text;
}

} // namespace vx::io::detail
