#pragma once

#include "vx/math/detail/Limbs.h"

#include <algorithm>
#include <bit>

// Attributes of the functions below, which the including source defines.
#ifndef VX_TREE_TARGET
#define VX_TREE_TARGET
#endif

namespace vx::math::detail {

/// A tree of polynomials: its root is one modulo x^length - 1, and the children of one modulo x^n - r^2 are its
/// residues modulo x^(n/2) - r and x^(n/2) + r. The leaves are values. On each level the node with the number i has r =
/// root(i).
template <class Prime>
class Transform {
public:
    using Value = typename Prime::Value;
    using Roots = typename Prime::Roots;

    /// There are half as many roots as the length, which is a power of 2 from 4 on.
    VX_TREE_TARGET Transform(Roots roots, Size length) noexcept
        : m_roots(roots)
        , m_length(length)
    {
    }

    /// The first `used` values, below 4 P, of a polynomial whose coefficients from `used` on are 0, and all below 2 P.
    VX_TREE_TARGET void enter(Value* values, Size used) const noexcept { down(values, m_length, used, 0); }
    /// The polynomial times the length, below 2 P, of the first `used` values, also below 2 P. The others are 0.
    VX_TREE_TARGET void leave(Value* values, Size used) const noexcept { up(values, m_length, used, 0); }

private:
    using Root = typename Prime::Root;

    /// 1 / root(number), times -1.
    VX_TREE_TARGET Root negatedInverse(Size number) const noexcept
    {
        return m_roots[3 * std::bit_floor(number) - 1 - number];
    }

    VX_TREE_TARGET static void split(Value& low, Value& high, Root root) noexcept
    {
        const Value sum = Prime::belowTwice(low);
        const Value product = Prime::multiply(high, root);
        low = sum + product;
        high = sum + Prime::twice() - product;
    }
    VX_TREE_TARGET static void splitByOne(Value& low, Value& high) noexcept
    {
        const Value left = Prime::belowTwice(low);
        const Value right = Prime::belowTwice(high);
        low = left + right;
        high = left + Prime::twice() - right;
    }
    /// The reverse, times 2.
    VX_TREE_TARGET static void join(Value& low, Value& high, Root negatedRoot) noexcept
    {
        const Value difference = high + Prime::twice() - low;
        low = Prime::belowTwice(low + high);
        high = Prime::multiply(difference, negatedRoot);
    }
    VX_TREE_TARGET static void joinByOne(Value& low, Value& high) noexcept
    {
        const Value difference = low + Prime::twice() - high;
        low = Prime::belowTwice(low + high);
        high = Prime::belowTwice(difference);
    }

    /// A level of the tree.
    VX_TREE_TARGET void splitAll(Value* values, Size half, Size number) const noexcept
    {
        const Root root = m_roots[number];
        for (Size place = 0; place < half; ++place)
            split(values[place], values[half + place], root);
    }

    VX_TREE_TARGET void down(Value* values, Size length, Size used, Size number) const noexcept
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
    VX_TREE_TARGET void down(Value* values, Size length, Size number) const noexcept
    {
        if (length == 1)
            return;
        if (length == 2)
            return splitAll(values, 1, number);
        const Size quarter = length / 4;
        Value* const a = values;
        Value* const b = a + quarter;
        Value* const c = b + quarter;
        Value* const d = c + quarter;
        const Root right = m_roots[2 * number + 1];
        if (number == 0) {
            for (Size place = 0; place < quarter; ++place) {
                splitByOne(a[place], c[place]);
                splitByOne(b[place], d[place]);
                splitByOne(a[place], b[place]);
                split(c[place], d[place], right);
            }
        } else {
            const Root root = m_roots[number];
            const Root left = m_roots[2 * number];
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
    VX_TREE_TARGET void up(Value* values, Size length, Size used, Size number) const noexcept
    {
        if (used == length)
            return up(values, length, number);
        const Size half = length / 2;
        Value* const upper = values + half;
        const Root root = m_roots[number];
        if (used > half) {
            up(values, half, 2 * number);
            for (Size place = used - half; place < half; ++place) {
                const Value product = Prime::multiply(upper[place], root);
                upper[place] = Prime::belowTwice(values[place] + Prime::twice() - product);
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
            const Value sum = values[place] + Prime::multiply(upper[place], root);
            values[place] = Prime::half(Prime::belowTwice(sum));
        }
        up(values, half, used, 2 * number);
        for (Size place = 0; place < half; ++place) {
            const Value twice = Prime::belowTwice(values[place] + values[place]);
            values[place] = Prime::belowTwice(twice + Prime::twice() - Prime::multiply(upper[place], root));
        }
    }

    VX_TREE_TARGET void up(Value* values, Size length, Size number) const noexcept
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
        Value* const a = values;
        Value* const b = a + quarter;
        Value* const c = b + quarter;
        Value* const d = c + quarter;
        const Root right = negatedInverse(2 * number + 1);
        if (number == 0) {
            for (Size place = 0; place < quarter; ++place) {
                joinByOne(a[place], b[place]);
                join(c[place], d[place], right);
                joinByOne(a[place], c[place]);
                joinByOne(b[place], d[place]);
            }
            return;
        }
        const Root root = negatedInverse(number);
        const Root left = negatedInverse(2 * number);
        for (Size place = 0; place < quarter; ++place) {
            join(a[place], b[place], left);
            join(c[place], d[place], right);
            join(a[place], c[place], root);
            join(b[place], d[place], root);
        }
    }

    Roots m_roots;
    Size m_length;
};

} // namespace vx::math::detail
