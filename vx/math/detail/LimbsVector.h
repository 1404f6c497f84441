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

/// As MontgomeryReducer, for numbers in the form x * 2^(52 n) with vectors of n digits, which may be above the modulus.
class VectorReducer {
public:
    /// The modulus is odd, of at most MOST_LIMBS words.
    explicit VectorReducer(Natural modulus);

    static constexpr Size MOST_LIMBS = 64;

    /// The words that a number takes in this form.
    Size width() const noexcept { return m_width; }
    void enter(Limb* target, const Limb* value) const;
    void leave(Limb* value, const Limb* source) const noexcept;
    void multiply(Limb* target, const Limb* left, const Limb* right) const noexcept;

private:
    Natural m_modulus;
    Size m_digitCount;
    Size m_width;
    Scratch m_digits; ///< of the modulus
    Limb m_negatedInverse;
};

#endif

} // namespace vx::math::detail
