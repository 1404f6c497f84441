#pragma once

#include "vx/math/detail/LimbsVector.h"

#if VX_ROW_PATHS

#include <immintrin.h>

/// Only the functions with this attribute have vectors. A compiler option would give them to inline functions of the
/// standard library, too, and other sources might be linked with these copies.
#define VX_FOR_VECTORS __attribute__((target("avx512f,avx512bw,avx512dq,avx512vbmi,avx512ifma,bmi2")))

namespace vx::math::detail {

using Vector = __m512i;

inline constexpr int DIGIT_BITS = 52;
inline constexpr Limb DIGIT_MASK = (Limb {1} << DIGIT_BITS) - 1;
inline constexpr Size LANES = 8;

VX_FOR_VECTORS inline Vector broadcast(Limb value) noexcept
{
    return _mm512_set1_epi64(static_cast<long long>(value));
}

} // namespace vx::math::detail

#endif
