#pragma once

#include "vx/math/detail/Limbs.h"

namespace vx::math::detail {

/// target[left + right] = left * right; `target` overlaps neither, and neither is empty. Squaring, with the same array
/// twice, takes less time. The time grows hardly faster than the sizes: the products of numbers of thousands of words
/// are those of polynomials, which number-theoretic transforms modulo two primes multiply point by point.
///
/// J. M. Pollard, "The fast Fourier transform in a finite field", Mathematics of Computation 25 (1971); cut to the
/// length of the product after J. van der Hoeven, "The truncated Fourier transform and applications", ISSAC 2004.
void multiplyByTransform(Limb* target, Natural left, Natural right);

} // namespace vx::math::detail
