#include "vx/math/detail/LimbsVectorTarget.h"

#if VX_ROW_PATHS

#define VX_TREE_TARGET VX_FOR_VECTORS
#include "vx/math/detail/LimbsTransformTree.h"

#include <algorithm>
#include <bit>
#include <memory>

namespace vx::math::detail {

namespace {

/// Arithmetic modulo a prime P below 2^50 that is 1 modulo 2^32, in all lanes at once. Residues may be above P, as in the
/// transform.
template <Limb P, Limb GENERATOR>
class VectorField {
public:
    using Value = Vector;
    static constexpr Limb PRIME = P;

    /// A constant factor, times 2^52, and its product with 1 / P modulo 2^52: with it the part that makes a product a
    /// multiple of 2^52 is known without the product. See MontgomeryReducer.
    struct Root {
        Vector factor;
        Vector quotient;
    };

    /// The root of each node, in the order of the numbers.
    class Roots {
    public:
        /// The storage has room for two words for each root; there are 8 or more.
        VX_FOR_VECTORS Roots(Limb* storage, Size size) noexcept
            : m_factors(storage)
            , m_quotients(storage + size)
        {
            storage[0] = withFactor(1);
            int order = 2;
            for (Size count = 1; count < size; count *= 2, ++order) {
                const Limb next = power(GENERATOR, (P - 1) >> order);
                for (Size number = 0; count < LANES && number < count; ++number)
                    storage[count + number] = product(storage[number], next);
                for (Size number = 0; count >= LANES && number < count; number += LANES)
                    _mm512_storeu_si512(storage + count + number,
                        below(broadcast(P), multiply(_mm512_loadu_si512(storage + number), constant(next))));
            }
            for (Size number = 0; number < size; number += LANES)
                _mm512_storeu_si512(storage + size + number, quotientOf(_mm512_loadu_si512(storage + number)));
        }

        VX_FOR_VECTORS Root operator[](Size number) const noexcept
        {
            return {broadcast(m_factors[number]), broadcast(m_quotients[number])};
        }

    private:
        const Limb* m_factors;
        const Limb* m_quotients;
    };

    VX_FOR_VECTORS static Vector twice() noexcept { return broadcast(2 * P); }
    /// Of a value below twice the limit.
    VX_FOR_VECTORS static Vector below(Vector limit, Vector value) noexcept
    {
        return _mm512_min_epu64(value, _mm512_sub_epi64(value, limit));
    }
    VX_FOR_VECTORS static Vector belowTwice(Vector value) noexcept { return below(twice(), value); }
    /// Of a value below 4 P.
    VX_FOR_VECTORS static Vector reduce(Vector value) noexcept { return below(broadcast(P), belowTwice(value)); }
    /// Below 2 P.
    VX_FOR_VECTORS static Vector multiply(Vector value, Root root) noexcept
    {
        const Vector zero = _mm512_setzero_si512();
        const Vector multiple = _mm512_madd52lo_epu64(zero, value, root.quotient);
        const Vector high = _mm512_madd52hi_epu64(broadcast(P), value, root.factor);
        return _mm512_sub_epi64(high, _mm512_madd52hi_epu64(zero, multiple, broadcast(P)));
    }
    /// Of a value below 2 P.
    VX_FOR_VECTORS static Vector half(Vector value) noexcept
    {
        const __mmask8 odd = _mm512_test_epi64_mask(value, broadcast(1));
        return _mm512_srli_epi64(_mm512_mask_add_epi64(value, odd, value, broadcast(P)), 1);
    }

    /// The product of two polynomials modulo x^8 - r, all with coefficients below 4 P, divided by 2^52.
    VX_FOR_VECTORS static Vector multiplyModulo(Vector left, Vector right, Root root, bool isNegative) noexcept
    {
        const Vector prime = broadcast(P);
        left = reduce(left);
        right = reduce(right);
        Vector wrapped = multiply(right, root); // what is multiplied by x^8
        if (isNegative)
            wrapped = _mm512_sub_epi64(twice(), wrapped);
        wrapped = below(prime, wrapped);
        Vector low = _mm512_setzero_si512();
        Vector high = low;
        Vector lanes = _mm512_set_epi64(15, 14, 13, 12, 11, 10, 9, 8);
        for (Size number = 0; number < LANES; ++number) {
            const Vector factor = _mm512_permutexvar_epi64(broadcast(number), left);
            const Vector other = _mm512_permutex2var_epi64(wrapped, lanes, right);
            low = _mm512_madd52lo_epu64(low, factor, other);
            high = _mm512_madd52hi_epu64(high, factor, other);
            lanes = _mm512_sub_epi64(lanes, broadcast(1));
        }
        high = _mm512_add_epi64(high, _mm512_add_epi64(prime, _mm512_srli_epi64(low, DIGIT_BITS)));
        const Vector zero = _mm512_setzero_si512();
        const Vector multiple = quotientOf(low);
        return belowTwice(_mm512_sub_epi64(high, _mm512_madd52hi_epu64(zero, multiple, prime)));
    }

    VX_FOR_VECTORS static Root constant(Limb value) noexcept
    {
        const Vector factor = broadcast(withFactor(value));
        return {factor, quotientOf(factor)};
    }
    static constexpr Limb product(Limb left, Limb right) noexcept
    {
        return static_cast<Limb>(static_cast<Wide>(left) * right % P);
    }
    static constexpr Limb power(Limb base, Limb exponent) noexcept
    {
        Limb result = 1;
        for (base %= P; exponent != 0; exponent >>= 1) {
            if ((exponent & 1) != 0)
                result = product(result, base);
            base = product(base, base);
        }
        return result;
    }
    static constexpr Limb inverse(Limb value) noexcept { return power(value, P - 2); }

private:
    static constexpr Limb INVERSE = (Limb {2} - P) & DIGIT_MASK; // (1 + c)(1 - c) = 1 - c^2, and c^2 is 0 modulo 2^52

    static constexpr Limb withFactor(Limb value) noexcept { return product(value % P, Limb {1} << DIGIT_BITS); }
    VX_FOR_VECTORS static Vector quotientOf(Vector low) noexcept
    {
        return _mm512_madd52lo_epu64(_mm512_setzero_si512(), low, broadcast(INVERSE));
    }

    static_assert(P < Limb {1} << 50 && (P - 1) << 32 == 0);
};

using First = VectorField<0x3fff300000001, 5>;
using Second = VectorField<0x3ffed00000001, 7>;
using Third = VectorField<0x3ffeb00000001, 3>;

/// The sizes of a product whose coefficients are words, eight in a vector.
struct Plan {
    explicit Plan(Size limbs) noexcept
        : used((limbs + LANES - 1) / LANES)
        , length(std::max(std::bit_ceil(used), SMALLEST))
    {
        const Size step = length / 16; // finer steps cost more than they save
        used = (used + step - 1) / step * step;
    }

    static constexpr Size SMALLEST = 16;

    Size used; ///< rounded up
    Size length;
};

VX_FOR_VECTORS __mmask8 lanesFrom(Size place, Size count) noexcept
{
    return static_cast<__mmask8>(count - place < LANES ? (1U << (count - place)) - 1 : 0xFFU);
}

/// The words as residues, below 4 P; zeros follow.
template <class Prime>
VX_FOR_VECTORS void fill(Vector* target, Size length, Natural source) noexcept
{
    const typename Prime::Root above = Prime::constant((Limb {1} << DIGIT_BITS) % Prime::PRIME);
    Vector* const end = target + length;
    for (Size place = 0; place < source.size(); place += LANES) {
        const Vector words = _mm512_maskz_loadu_epi64(lanesFrom(place, source.size()), source.data() + place);
        const Vector low = _mm512_and_si512(words, broadcast(DIGIT_MASK)); // may be some more than 4 P
        const Vector high = Prime::multiply(_mm512_srli_epi64(words, DIGIT_BITS), above);
        *target++ = _mm512_add_epi64(Prime::belowTwice(Prime::belowTwice(low)), high);
    }
    while (target != end)
        *target++ = _mm512_setzero_si512();
}

/// The product's coefficients modulo one prime.
template <class Prime>
VX_FOR_VECTORS void multiplyModulo(Vector* target, Natural left, Natural right, const Plan& plan,
    Limb* roots, // NOLINT(readability-non-const-parameter): the constructor of the roots fills it
    Vector* other) noexcept
{
    const typename Prime::Roots nodes(roots, plan.length / 2);
    const Transform<Prime> transform(nodes, plan.length);
    fill<Prime>(target, plan.length, left);
    transform.enter(target, plan.used);
    if (left.data() == right.data() && left.size() == right.size()) {
        other = target;
    } else {
        fill<Prime>(other, plan.length, right);
        transform.enter(other, plan.used);
    }
    for (Size place = 0; place < plan.used; ++place)
        target[place] = Prime::multiplyModulo(target[place], other[place], nodes[place / 2], place % 2 != 0);
    for (Size place = plan.used; place < plan.length; ++place)
        target[place] = _mm512_setzero_si512();
    transform.leave(target, plan.used);
    const auto scale
        = Prime::constant(Prime::product(Prime::inverse(plan.length), (Limb {1} << DIGIT_BITS) % Prime::PRIME));
    for (Size place = 0; place < plan.used; ++place)
        target[place] = Prime::below(broadcast(Prime::PRIME), Prime::multiply(target[place], scale));
}

/// target[count] = the number whose coefficients are known modulo the three primes. With mixed radixes: H. L. Garner,
/// "The residue number system", IRE Transactions on Electronic Computers 8 (1959).
VX_FOR_VECTORS void unite(
    Limb* target, Size count, const Vector* first, const Vector* second, const Vector* third) noexcept
{
    constexpr Limb P1 = First::PRIME, P2 = Second::PRIME, P3 = Third::PRIME;
    constexpr Limb SECOND_INVERSE = Second::inverse(P1 % P2);
    constexpr Limb THIRD_INVERSE = Third::inverse(P1 % P3);
    constexpr Limb LAST_INVERSE = Third::inverse(P2 % P3);
    const auto secondInverse = Second::constant(SECOND_INVERSE);
    const auto thirdInverse = Third::constant(THIRD_INVERSE);
    const auto lastInverse = Third::constant(LAST_INVERSE);
    const Vector mask = broadcast(DIGIT_MASK);
    Wide sum = 0;
    for (Size place = 0; place < count; place += LANES, ++first, ++second, ++third) {
        const Vector ones = *first;
        const Vector two = _mm512_sub_epi64(_mm512_add_epi64(*second, Second::twice()), ones);
        const Vector twos = Second::below(broadcast(P2), Second::multiply(two, secondInverse));
        Vector three = _mm512_sub_epi64(_mm512_add_epi64(*third, Third::twice()), ones);
        three = _mm512_sub_epi64(_mm512_add_epi64(Third::multiply(three, thirdInverse), Third::twice()), twos);
        const Vector threes = Third::below(broadcast(P3), Third::multiply(three, lastInverse));

        // ones + P1 * (twos + P2 * threes) in digits
        Vector low = _mm512_madd52lo_epu64(twos, threes, broadcast(P2));
        const Vector high = _mm512_madd52hi_epu64(_mm512_srli_epi64(low, DIGIT_BITS), threes, broadcast(P2));
        low = _mm512_and_si512(low, mask);
        const Vector digit0 = _mm512_madd52lo_epu64(ones, low, broadcast(P1));
        Vector digit1 = _mm512_madd52hi_epu64(_mm512_srli_epi64(digit0, DIGIT_BITS), low, broadcast(P1));
        digit1 = _mm512_madd52lo_epu64(digit1, high, broadcast(P1));
        const Vector digit2 = _mm512_madd52hi_epu64(_mm512_srli_epi64(digit1, DIGIT_BITS), high, broadcast(P1));
        digit1 = _mm512_and_si512(digit1, mask);

        alignas(Vector) Limb words[3][LANES];
        _mm512_store_si512(words[0], _mm512_or_si512(_mm512_and_si512(digit0, mask), _mm512_slli_epi64(digit1, 52)));
        _mm512_store_si512(words[1], _mm512_or_si512(_mm512_srli_epi64(digit1, 12), _mm512_slli_epi64(digit2, 40)));
        _mm512_store_si512(words[2], _mm512_srli_epi64(digit2, 24));
        for (Size lane = 0; lane < std::min(LANES, count - place); ++lane) {
            const Wide value = wide(words[1][lane], words[0][lane]);
            sum += value;
            *target++ = static_cast<Limb>(sum);
            sum = wide(words[2][lane] + (sum < value), detail::high(sum));
        }
    }
}

} // namespace

VX_FOR_VECTORS void multiplyByVectorTransform(Limb* target, Natural left, Natural right)
{
    const Size count = left.size() + right.size();
    const Plan plan(count);
    Scratch scratch((4 * LANES + 1) * plan.length + LANES);
    void* start = scratch.get();
    std::size_t room = ((4 * LANES + 1) * plan.length + LANES) * sizeof(Limb);
    auto* const first
        = static_cast<Vector*>(std::align(alignof(Vector), 4 * plan.length * sizeof(Vector), start, room));
    Vector* const second = first + plan.length;
    Vector* const third = second + plan.length;
    Vector* const other = third + plan.length;
    auto* const roots = reinterpret_cast<Limb*>(other + plan.length);
    multiplyModulo<First>(first, left, right, plan, roots, other);
    multiplyModulo<Second>(second, left, right, plan, roots, other);
    multiplyModulo<Third>(third, left, right, plan, roots, other);
    unite(target, count, first, second, third);
}

} // namespace vx::math::detail

#endif
