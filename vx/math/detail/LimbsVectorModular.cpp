#include "vx/math/detail/LimbsVectorTarget.h"

#if VX_ROW_PATHS

#include <algorithm>
#include <array>
#include <utility>

namespace vx::math::detail {

namespace {

/// Two bits more than the modulus has, so that a product of numbers below its double is below its double again.
constexpr Size reducerDigits(Size limbs) noexcept
{
    return (limbs * LIMB_BITS + 2 + DIGIT_BITS - 1) / DIGIT_BITS;
}

constexpr Size vectorsFor(Size digits) noexcept
{
    return (digits + LANES - 1) / LANES;
}

/// target = left * right / 2^(52 digits) modulo the modulus, all in `VECTORS` vectors and below twice the modulus.
/// Each step adds what makes the lowest digit 0, and drops it.
template <Size VECTORS>
VX_FOR_VECTORS void multiplyModulo(
    Limb* target, const Limb* left, const Limb* right, const Limb* modulus, Limb negatedInverse, Size digits) noexcept
{
    const Vector zero = _mm512_setzero_si512();
    const Vector inverse = broadcast(negatedInverse);
    Vector sums[VECTORS];
    Vector low[VECTORS + 1];
    Vector high[VECTORS];
    for (Size number = 0; number < VECTORS; ++number)
        sums[number] = zero;
    low[VECTORS] = zero;
    for (Size place = 0; place < digits; ++place) {
        const Vector factor = broadcast(left[place]);
        for (Size number = 0; number < VECTORS; ++number) {
            const Vector other = _mm512_loadu_si512(right + number * LANES);
            // Not added to the sums at once: these are waited for.
            sums[number] = _mm512_add_epi64(sums[number], _mm512_madd52lo_epu64(zero, factor, other));
            high[number] = _mm512_madd52hi_epu64(zero, factor, other);
        }
        const Vector multiple
            = _mm512_madd52lo_epu64(zero, _mm512_broadcastq_epi64(_mm512_castsi512_si128(sums[0])), inverse);
        for (Size number = 0; number < VECTORS; ++number) {
            const Vector other = _mm512_loadu_si512(modulus + number * LANES);
            low[number] = _mm512_madd52lo_epu64(sums[number], multiple, other);
            high[number] = _mm512_madd52hi_epu64(high[number], multiple, other);
        }
        high[0] = _mm512_mask_add_epi64(high[0], 1, high[0], _mm512_srli_epi64(low[0], DIGIT_BITS));
        for (Size number = 0; number < VECTORS; ++number)
            sums[number] = _mm512_add_epi64(_mm512_alignr_epi64(low[number + 1], low[number], 1), high[number]);
    }
    Carrier carrier;
    for (Size number = 0; number < VECTORS; ++number)
        _mm512_storeu_si512(target + number * LANES, carrier.next(sums[number]));
}

constexpr Size MOST_VECTORS = vectorsFor(reducerDigits(VectorReducer::MOST_LIMBS));

using Multiply = void (*)(Limb*, const Limb*, const Limb*, const Limb*, Limb, Size) noexcept;

template <Size... BEFORE>
constexpr std::array<Multiply, MOST_VECTORS> makeFunctions(std::index_sequence<BEFORE...>) noexcept
{
    return {multiplyModulo<BEFORE + 1>...};
}

constexpr std::array<Multiply, MOST_VECTORS> FUNCTIONS = makeFunctions(std::make_index_sequence<MOST_VECTORS>());

} // namespace

VectorReducer::VectorReducer(Natural modulus)
    : m_modulus(modulus)
    , m_digitCount(reducerDigits(modulus.size()))
    , m_width(vectorsFor(m_digitCount) * LANES)
    , m_digits(m_width + LANES)
    , m_negatedInverse((Limb {0} - inverseOf(modulus[0])) & DIGIT_MASK)
{
    std::fill_n(m_digits.get(), m_width, 0);
    cutDigits(m_digits.get(), modulus);
}

void VectorReducer::enter(Limb* target, const Limb* value) const
{
    const Size size = m_modulus.size();
    const Size bits = m_digitCount * DIGIT_BITS;
    const Size words = bits / LIMB_BITS;
    const Size count = size + words + 1;
    Scratch scratch(count + (count - size + 1) + size);
    Limb* const shifted = scratch.get();
    Limb* const rest = shifted + count;
    std::fill_n(shifted, words, 0);
    shifted[count - 1] = shiftLeft(shifted + words, {value, size}, static_cast<int>(bits % LIMB_BITS));
    divide(rest + size, rest, {shifted, count}, m_modulus);
    std::fill_n(target, m_width, 0);
    cutDigits(target, {rest, size});
}

VX_FOR_VECTORS void VectorReducer::leave(Limb* value, const Limb* source) const noexcept
{
    constexpr Limb ONE[MOST_VECTORS * LANES] = {1};
    Limb digits[MOST_VECTORS * LANES];
    multiply(digits, source, ONE);
    const Size size = m_modulus.size();
    DigitWriter writer(value, size);
    for (Size place = 0; place < m_width; place += LANES)
        writer.write(_mm512_loadu_si512(digits + place));
    if (compare(value, m_modulus.data(), size) >= 0)
        subtract(value, {value, size}, m_modulus);
}

void VectorReducer::multiply(Limb* target, const Limb* left, const Limb* right) const noexcept
{
    FUNCTIONS[m_width / LANES - 1](target, left, right, m_digits.get(), m_negatedInverse, m_digitCount);
}

} // namespace vx::math::detail

#endif
