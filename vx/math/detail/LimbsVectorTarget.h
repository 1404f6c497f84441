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

inline constexpr Size digitsFor(Size limbs) noexcept
{
    return (limbs * LIMB_BITS + DIGIT_BITS - 1) / DIGIT_BITS;
}

/// Makes digits of sums below 2^63, which follow each other from the lowest place on.
class Carrier {
public:
    VX_FOR_VECTORS Carrier() noexcept
        : m_above(_mm512_setzero_si512())
    {
    }

    VX_FOR_VECTORS Vector next(Vector sums) noexcept
    {
        const Vector mask = broadcast(DIGIT_MASK);
        const Vector above = _mm512_srli_epi64(sums, DIGIT_BITS);
        Vector digits = _mm512_add_epi64(_mm512_and_si512(sums, mask), _mm512_alignr_epi64(above, m_above, LANES - 1));
        m_above = above;
        // The rest is at most 1 for each digit. An addition of bits finds how far each one is carried.
        const unsigned int full = _mm512_cmpeq_epi64_mask(digits, mask);
        const unsigned int over = _mm512_cmpgt_epi64_mask(digits, mask);
        const unsigned int carries = (full + 2 * over + m_carry) ^ full;
        m_carry = carries >> LANES;
        digits = _mm512_mask_sub_epi64(digits, static_cast<__mmask8>(carries), digits, broadcast(~Limb {0}));
        return _mm512_and_si512(digits, mask);
    }

private:
    Vector m_above;
    unsigned int m_carry = 0;
};

/// Digits of 52 bits, and zeros up to a whole vector.
void cutDigits(Limb* digits, Natural source) noexcept;

/// Writes a number from its digits.
class DigitWriter {
public:
    DigitWriter(Limb* target, Size limbs) noexcept
        : m_target(reinterpret_cast<char*>(target))
        , m_size(limbs * sizeof(Limb))
    {
    }

    /// The next digits. Those above the target's end are 0.
    VX_FOR_VECTORS void write(Vector digits) noexcept;

private:
    char* m_target;
    Size m_size;
};

} // namespace vx::math::detail

#endif
