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

#endif

} // namespace vx::math::detail
