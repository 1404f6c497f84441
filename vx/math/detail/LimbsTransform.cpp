#include "vx/math/detail/LimbsTransform.h"

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
    static constexpr Limb PRIME = P;

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

/// A tree of polynomials: its root is one modulo x^length - 1, and the children of one modulo x^n - r^2 are its
/// residues modulo x^(n/2) - r and x^(n/2) + r. The leaves are values. On each level the node with the number i has r =
/// root(i).
template <class Prime>
class Transform {
public:
    /// `roots` has half of `length` places, which is a power of 2 from 4 on.
    Transform(Limb* roots, Size length) noexcept
        : m_roots(roots)
        , m_length(length)
    {
        roots[0] = Prime::constant(1);
        int order = 2;
        for (Size count = 1; count < length / 2; count *= 2, ++order) {
            const Limb factor = Prime::root(order);
            for (Size number = 0; number < count; ++number)
                roots[count + number] = Prime::below(P, Prime::multiply(roots[number], factor));
        }
    }

    /// The first `used` values, below 4 P, of a polynomial whose coefficients from `used` on are 0, and all below 2 P.
    void enter(Limb* values, Size used) const noexcept { down(values, m_length, used, 0); }
    /// The polynomial times the length, below 2 P, of the first `used` values, also below 2 P. The others are 0.
    void leave(Limb* values, Size used) const noexcept { up(values, m_length, used, 0); }

private:
    static constexpr Limb P = Prime::PRIME;

    /// 1 / root(number), times -1.
    Limb negatedInverse(Size number) const noexcept { return m_roots[3 * std::bit_floor(number) - 1 - number]; }

    static void split(Limb& low, Limb& high, Limb root) noexcept
    {
        const Limb sum = Prime::below(2 * P, low);
        const Limb product = Prime::multiply(high, root);
        low = sum + product;
        high = sum + 2 * P - product;
    }
    static void splitByOne(Limb& low, Limb& high) noexcept
    {
        const Limb left = Prime::below(2 * P, low);
        const Limb right = Prime::below(2 * P, high);
        low = left + right;
        high = left + 2 * P - right;
    }
    /// The reverse, times 2.
    static void join(Limb& low, Limb& high, Limb negatedRoot) noexcept
    {
        const Limb difference = high + 2 * P - low;
        low = Prime::below(2 * P, low + high);
        high = Prime::multiply(difference, negatedRoot);
    }
    static void joinByOne(Limb& low, Limb& high) noexcept
    {
        const Limb difference = low + 2 * P - high;
        low = Prime::below(2 * P, low + high);
        high = Prime::below(2 * P, difference);
    }

    /// A level of the tree.
    void splitAll(Limb* values, Size half, Size number) const noexcept
    {
        const Limb root = m_roots[number];
        for (Size place = 0; place < half; ++place)
            split(values[place], values[half + place], root);
    }

    void down(Limb* values, Size length, Size used, Size number) const noexcept
    {
        if (used == length)
            return down(values, length, number);
        const Size half = length / 2;
        splitAll(values, half, number);
        down(values, half, std::min(used, half), 2 * number);
        if (used > half)
            down(values + half, half, used - half, 2 * number + 1);
    }

    /// Two levels at once, which halves loads and stores.
    void down(Limb* values, Size length, Size number) const noexcept
    {
        if (length == 1)
            return;
        if (length == 2)
            return splitAll(values, 1, number);
        const Size quarter = length / 4;
        Limb* const a = values;
        Limb* const b = a + quarter;
        Limb* const c = b + quarter;
        Limb* const d = c + quarter;
        const Limb right = m_roots[2 * number + 1];
        if (number == 0) {
            for (Size place = 0; place < quarter; ++place) {
                splitByOne(a[place], c[place]);
                splitByOne(b[place], d[place]);
                splitByOne(a[place], b[place]);
                split(c[place], d[place], right);
            }
        } else {
            const Limb root = m_roots[number];
            const Limb left = m_roots[2 * number];
            for (Size place = 0; place < quarter; ++place) {
                split(a[place], c[place], root);
                split(b[place], d[place], root);
                split(a[place], b[place], left);
                split(c[place], d[place], right);
            }
        }
        if (quarter == 1)
            return;
        for (Size child = 0; child < 4; ++child)
            down(values + child * quarter, quarter, 4 * number + child);
    }

    /// From `used` on the values are coefficients already, times the length. The result is coefficients alone.
    void up(Limb* values, Size length, Size used, Size number) const noexcept
    {
        if (used == length)
            return up(values, length, number);
        const Size half = length / 2;
        Limb* const upper = values + half;
        const Limb root = m_roots[number];
        if (used > half) {
            up(values, half, 2 * number);
            for (Size place = used - half; place < half; ++place) {
                const Limb product = Prime::multiply(upper[place], root);
                upper[place] = Prime::below(2 * P, values[place] + 2 * P - product);
            }
            up(upper, half, used - half, 2 * number + 1);
            if (number == 0) {
                for (Size place = 0; place < half; ++place)
                    joinByOne(values[place], upper[place]);
            } else {
                for (Size place = 0; place < half; ++place)
                    join(values[place], upper[place], negatedInverse(number));
            }
            return;
        }
        for (Size place = used; place < half; ++place) {
            const Limb sum = values[place] + Prime::multiply(upper[place], root);
            values[place] = Prime::half(Prime::below(2 * P, sum));
        }
        up(values, half, used, 2 * number);
        for (Size place = 0; place < half; ++place) {
            const Limb twice = Prime::below(2 * P, 2 * values[place]);
            values[place] = Prime::below(2 * P, twice + 2 * P - Prime::multiply(upper[place], root));
        }
    }

    void up(Limb* values, Size length, Size number) const noexcept
    {
        if (length == 1)
            return;
        if (length == 2)
            return number == 0 ? joinByOne(values[0], values[1]) : join(values[0], values[1], negatedInverse(number));
        const Size quarter = length / 4;
        if (quarter > 1) {
            for (Size child = 0; child < 4; ++child)
                up(values + child * quarter, quarter, 4 * number + child);
        }
        Limb* const a = values;
        Limb* const b = a + quarter;
        Limb* const c = b + quarter;
        Limb* const d = c + quarter;
        const Limb right = negatedInverse(2 * number + 1);
        if (number == 0) {
            for (Size place = 0; place < quarter; ++place) {
                joinByOne(a[place], b[place]);
                join(c[place], d[place], right);
                joinByOne(a[place], c[place]);
                joinByOne(b[place], d[place]);
            }
            return;
        }
        const Limb root = negatedInverse(number);
        const Limb left = negatedInverse(2 * number);
        for (Size place = 0; place < quarter; ++place) {
            join(a[place], b[place], left);
            join(c[place], d[place], right);
            join(a[place], c[place], root);
            join(b[place], d[place], root);
        }
    }

    const Limb* m_roots;
    Size m_length;
};

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
    const Transform<Prime> transform(roots, plan.length);
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
