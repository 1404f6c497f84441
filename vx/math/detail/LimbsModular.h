#pragma once

#include "vx/math/detail/Limbs.h"

namespace vx::math::detail {

/// target = the greatest common divisor of two numbers that are not 0. Returns its words, no more than the shorter
/// one's.
Size greatestCommonDivisor(Limb* target, Natural left, Natural right);

/// target[modulus] = base to the power of `exponent` (not 0), modulo `modulus` (not 0). No operand ends in a zero word.
void powerModulo(Limb* target, Natural base, Natural exponent, Natural modulus);

} // namespace vx::math::detail
