#include "vx/math/detail/LimbsTransform.h"

#include "vx/math/detail/LimbsTransformTree.h"
#include "vx/math/detail/LimbsVector.h"

#include <algorithm>
#include <bit>

namespace vx::math::detail {

namespace {

/// Arithmetic modulo a prime P below 2^62 that is 1 modulo 2^32. Products are P. L. Montgomery's, see
/// MontgomeryReducer: they lack a factor of 2^64, so constants are stored with that factor. Residues may be above P:
/// each function says by how much.
template <Limb P, Limb GENERATOR>
class Field {
public:
    using Value = Limb;
    using Root = Limb;

    static constexpr Limb PRIME = P;

    /// The root of each node, in the order of the numbers.
    class Roots {
    public:
        Roots(Limb* roots, Size size) noexcept
            : m_roots(roots)
        {
            roots[0] = constant(1);
            int order = 2;
            for (Size count = 1; count < size; count *= 2, ++order) {
                const Limb factor = root(order);
                for (Size number = 0; number < count; ++number)
                    roots[count + number] = below(P, multiply(roots[number], factor));
            }
        }

        Root operator[](Size number) const noexcept { return m_roots[number]; }

    private:
        const Limb* m_roots;
    };

    /// Below 2 P. One factor is below P.
    static constexpr Limb multiply(Limb left, Limb right) noexcept
    {
        const Wide product = static_cast<Wide>(left) * right;
        const Limb quotient = static_cast<Limb>(product) * INVERSE;
        return high(product) - high(static_cast<Wide>(quotient) * P) + P;
    }
    /// Of a value below twice the limit.
    static constexpr Limb below(Limb limit, Limb value) noexcept
    {
        const Limb difference = value - limit; // no branch: it could not be predicted
        return difference + (limit & (Limb {0} - (difference >> (LIMB_BITS - 1))));
    }
    static constexpr Limb twice() noexcept { return 2 * P; }
    static constexpr Limb belowTwice(Limb value) noexcept { return below(2 * P, value); }
    /// Of a value below 2 P.
    static constexpr Limb half(Limb value) noexcept { return (value + (P & (Limb {0} - (value & 1)))) >> 1; }

    /// The constant of a value, with the factor.
    static constexpr Limb constant(Limb value) noexcept
    {
        return static_cast<Limb>((static_cast<Wide>(value) << LIMB_BITS) % P);
    }
    static constexpr Limb power(Limb base, Limb exponent) noexcept // of a constant
    {
        Limb result = constant(1);
        for (; exponent != 0; exponent >>= 1) {
            if ((exponent & 1) != 0)
                result = below(P, multiply(result, base));
            base = below(P, multiply(base, base));
        }
        return result;
    }
    static constexpr Limb inverse(Limb value) noexcept { return power(constant(value % P), P - 2); }
    /// Of the order 2^bits.
    static constexpr Limb root(int bits) noexcept { return power(constant(GENERATOR), (P - 1) >> bits); }

private:
    static constexpr Limb INVERSE = Limb {2} - P; // (1 + c)(1 - c) = 1 - c^2, and c^2 is 0 modulo 2^64

    static_assert(P < Limb {1} << 62 && (P - 1) << 32 == 0);
};

using First = Field<0x3fffffee00000001, 3>;
using Second = Field<0x3fffffb400000001, 17>;
constexpr int PRODUCT_BITS = 123; // a number of this many bits is below the product of the primes

/// How two numbers become polynomials with a product whose coefficients the primes tell apart.
struct Plan {
    Plan(Size left, Size right) noexcept
    {
        const Size shorter = std::min(left, right) * LIMB_BITS;
        // Fewer coefficients allow more bits in each, and the number of bits in turn determines how many there are.
        bits = bitsFor(shorter / MOST_BITS);
        bits = bitsFor(shorter / static_cast<Size>(bits));
        used = coefficients(left) + coefficients(right) - 1;
        length = std::max(std::bit_ceil(used), SMALLEST);
        const Size step = length / 16; // finer steps cost more than they save
        used = (used + step - 1) / step * step;
    }

    static int bitsFor(Size terms) noexcept { return (PRODUCT_BITS - static_cast<int>(std::bit_width(terms))) / 2; }
    Size coefficients(Size limbs) const noexcept
    {
        return (limbs * LIMB_BITS + static_cast<Size>(bits) - 1) / static_cast<Size>(bits);
    }

    static constexpr int MOST_BITS = PRODUCT_BITS / 2;
    static constexpr Size SMALLEST = 32;

    int bits;
    Size used; ///< of the product, rounded up
    Size length;
};

/// Cuts a number into coefficients; zeros follow.
void cut(Limb* target, Size length, Natural source, int bits) noexcept
{
    const Limb mask = (Limb {1} << bits) - 1;
    Limb* const end = target + length;
    Wide pending = 0;
    int pendingBits = 0;
    for (const Limb limb : source) {
        pending |= static_cast<Wide>(limb) << pendingBits;
        pendingBits += LIMB_BITS;
        while (pendingBits >= bits) {
            *target++ = static_cast<Limb>(pending) & mask;
            pending >>= bits;
            pendingBits -= bits;
        }
    }
    if (pendingBits > 0)
        *target++ = static_cast<Limb>(pending);
    std::fill(target, end, 0);
}

/// The product's coefficients modulo one prime, times 2^64.
template <class Prime>
void multiplyModulo(Limb* target, Natural left, Natural right, const Plan& plan,
    Limb* roots, // NOLINT(readability-non-const-parameter): the transform fills it
    Limb* other) noexcept
{
    const Transform<Prime> transform({roots, plan.length / 2}, plan.length);
    cut(target, plan.length, left, plan.bits);
    transform.enter(target, plan.used);
    if (left.data() == right.data() && left.size() == right.size()) {
        other = target;
    } else {
        cut(other, plan.length, right, plan.bits);
        transform.enter(other, plan.used);
    }
    for (Size place = 0; place < plan.used; ++place) {
        const Limb factor = Prime::below(Prime::PRIME, Prime::below(2 * Prime::PRIME, other[place]));
        target[place] = Prime::multiply(target[place], factor);
    }
    std::fill(target + plan.used, target + plan.length, 0);
    transform.leave(target, plan.used);
    const Limb scale = Prime::multiply(Prime::inverse(plan.length), Prime::constant(Prime::constant(1)));
    const Limb factor = Prime::below(Prime::PRIME, scale);
    for (Size place = 0; place < plan.used; ++place)
        target[place] = Prime::below(Prime::PRIME, Prime::multiply(target[place], factor));
}

/// target[count] = the number whose coefficients are known modulo both primes.
void unite(Limb* target, Size count, const Limb* first, const Limb* second, const Plan& plan) noexcept
{
    constexpr Limb P1 = First::PRIME, P2 = Second::PRIME, INVERSE = Second::inverse(P1);
    const Size coefficients = plan.used;
    const Limb mask = (Limb {1} << plan.bits) - 1;
    Wide sum = 0;
    Wide pending = 0;
    int pendingBits = 0;
    Limb* const end = target + count;
    for (Size place = 0; target != end; ++place) {
        if (place < coefficients) {
            const Limb times = Second::multiply(second[place] + 2 * P2 - first[place], INVERSE);
            sum += static_cast<Wide>(Second::below(P2, times)) * P1 + first[place];
        }
        pending |= static_cast<Wide>(static_cast<Limb>(sum) & mask) << pendingBits;
        sum >>= plan.bits;
        pendingBits += plan.bits;
        if (pendingBits >= LIMB_BITS) {
            *target++ = static_cast<Limb>(pending);
            pending >>= LIMB_BITS;
            pendingBits -= LIMB_BITS;
        }
    }
}

} // namespace

void multiplyByTransform(Limb* target, Natural left, Natural right)
{
#if VX_ROW_PATHS
    if (std::min(left.size(), right.size()) <= MOST_VECTOR_TRANSFORM && hasVectors())
        return multiplyByVectorTransform(target, left, right);
#endif
    const Plan plan(left.size(), right.size());
    Scratch scratch(3 * plan.length + plan.length / 2);
    Limb* const first = scratch.get();
    Limb* const second = first + plan.length;
    Limb* const other = second + plan.length;
    Limb* const roots = other + plan.length;
    multiplyModulo<First>(first, left, right, plan, roots, other);
    multiplyModulo<Second>(second, left, right, plan, roots, other);
    unite(target, left.size() + right.size(), first, second, plan);
}

} // namespace vx::math::detail
