#pragma once

#include "vx/math/detail/LimbsRow.h"

namespace vx::math::detail {

#if VX_ROW_PATHS

/// Whether the processor multiplies vectors of numbers of 52 bits (AVX-512 with IFMA and VBMI), so that the functions
/// below may be called.
bool hasVectors() noexcept;

/// No operand of these functions has more words.
inline constexpr Size MOST_VECTOR_LIMBS = 480;

/// target[left + right] = left * right, of at least one word each; `right` is not the longer one.
void multiplyByVectors(Limb* target, Natural left, Natural right) noexcept;
void squareByVectors(Limb* target, Natural source) noexcept;

/// As `multiplyByTransform`, for numbers the shorter one of which has at most 2^21 words. With vectors, there are three
/// primes of 50 bits.
void multiplyByVectorTransform(Limb* target, Natural left, Natural right);
inline constexpr Size MOST_VECTOR_TRANSFORM = Size {1} << 21;

#endif

} // namespace vx::math::detail
