#pragma once

#include "vx/math/detail/Limbs.h"

#include <span>
#include <string>

/// Natural numbers to and from digits, the most significant first, in a radix from 2 to 36.
namespace vx::math::detail {

/// The number of words that is enough for any number with this many digits.
Size limbsForDigits(Size digits, int radix) noexcept;

/// `digits` are values below `radix`. Fills all `limbsForDigits` words of `target`.
void fromDigits(Limb* target, std::span<const unsigned char> digits, int radix);

/// Lower-case digits without zeros in front; empty for 0, which has no words.
std::string toDigits(Natural value, int radix);

} // namespace vx::math::detail
