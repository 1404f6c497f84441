#include "vx/math/detail/Limbs.h"
#include "vx/math/detail/LimbsVector.h"

#include <algorithm>

namespace vx::math::detail {

namespace {

/// From how many words of a quotient on dividing by halves is faster; measured.
Size recursiveDivide() noexcept
{
#if VX_ROW_PATHS
    if (hasVectors())
        return 24;
#endif
    return 40;
}

// Reciprocals and the divisions by them: N. Möller, T. Granlund, "Improved division by invariant integers", IEEE
// Transactions on Computers 60 (2011). Divisors have their top bit set.

/// (B^2 - 1) / divisor - B.
Limb reciprocalOf(Limb divisor) noexcept
{
    return static_cast<Limb>(wide(~divisor, ~Limb {0}) / divisor);
}

/// Divides three words by two.
class TopDivisor {
public:
    TopDivisor(Limb upper, Limb lower) noexcept
        : m_divisor(wide(upper, lower))
        , m_reciprocal(reciprocalOf(upper))
    {
        Limb product = upper * m_reciprocal + lower;
        if (product < lower) {
            --m_reciprocal;
            if (product >= upper) {
                --m_reciprocal;
                product -= upper;
            }
            product -= upper;
        }
        const Wide lowProduct = static_cast<Wide>(m_reciprocal) * lower;
        product += high(lowProduct);
        if (product < high(lowProduct)) {
            --m_reciprocal;
            if (wide(product, static_cast<Limb>(lowProduct)) >= m_divisor)
                --m_reciprocal;
        }
    }

    bool isAbove(Wide value) const noexcept { return value < m_divisor; }

    /// `top` is below the divisor.
    Limb divide(Wide top, Limb lower, Wide* remainder) const noexcept
    {
        const Wide estimate = static_cast<Wide>(m_reciprocal) * high(top) + top;
        Limb quotient = high(estimate);
        const Limb upperRest = static_cast<Limb>(top) - quotient * high(m_divisor);
        Wide rest = wide(upperRest, lower) - static_cast<Wide>(static_cast<Limb>(m_divisor)) * quotient - m_divisor;
        ++quotient;
        if (high(rest) >= static_cast<Limb>(estimate)) {
            --quotient;
            rest += m_divisor;
        }
        if (rest >= m_divisor) {
            ++quotient;
            rest -= m_divisor;
        }
        *remainder = rest;
        return quotient;
    }

private:
    Wide m_divisor;
    Limb m_reciprocal;
};

/// Divides a number by one of at least two words, the top bit of which is set. The quotient's word count is that of the
/// source, less the divisor's, and the source's top words are below the divisor; the remainder stays in the source.
class Division {
public:
    explicit Division(Natural divisor) noexcept
        : m_divisor(divisor)
        , m_top(divisor[divisor.size() - 1], divisor[divisor.size() - 2])
    {
    }

    /// D. E. Knuth, "The Art of Computer Programming", volume 2, 4.3.1, algorithm D.
    void school(Limb* quotient, Size count, Limb* source) const noexcept
    {
        const Size size = m_divisor.size();
        while (count-- > 0) {
            Limb* const window = source + count;
            const Wide top = wide(window[size], window[size - 1]);
            quotient[count] = m_top.isAbove(top) ? digit(window, top) : largestDigit(window);
        }
    }

private:
    Limb digit(Limb* window, Wide top) const noexcept
    {
        const Size size = m_divisor.size();
        Wide rest = 0;
        Limb quotient = m_top.divide(top, window[size - 2], &rest);
        const Limb borrow = subtractProduct(window, m_divisor.first(size - 2), quotient);
        const bool isTooLarge = rest < borrow;
        rest -= borrow;
        window[size - 2] = static_cast<Limb>(rest);
        window[size - 1] = high(rest);
        if (isTooLarge) {
            --quotient;
            add(window, {window, size}, m_divisor);
        }
        return quotient;
    }

    /// For a dividend whose top words equal those of the divisor.
    Limb largestDigit(Limb* window) const noexcept
    {
        const Size size = m_divisor.size();
        Limb quotient = ~Limb {0};
        Limb above = window[size] - subtractProduct(window, m_divisor, quotient);
        while (above != 0) {
            --quotient;
            above += add(window, {window, size}, m_divisor);
        }
        return quotient;
    }

    Natural m_divisor;
    TopDivisor m_top;
};

/// As `Division::school`, for a quotient of no more words than the divisor. Long quotients are computed by halves, so
/// that most of the work is multiplication of long numbers: C. Burnikel, J. Ziegler, "Fast Recursive Division" (1998).
void divideByHalves(Limb* quotient, Size count, Limb* source, Natural divisor, Limb* scratch)
{
    if (count < recursiveDivide())
        return Division(divisor).school(quotient, count, source);

    const Size size = divisor.size();
    const Size below = size - count;
    if (below < count / 2) {
        const Size half = count / 2;
        divideByHalves(quotient + half, count - half, source + half, divisor, scratch);
        divideByHalves(quotient, half, source, divisor, scratch);
        return;
    }

    // The quotient of the upper words, which is at most a little too large.
    const Natural top = divisor.subspan(below);
    Limb* const upper = source + below;
    Limb above = 0;
    if (compare(upper + count, top.data(), count) < 0) {
        divideByHalves(quotient, count, upper, top, scratch);
    } else { // they are equal: the largest quotient, and (top * B^count + low) - (B^count - 1) * top = low + top
        std::fill_n(quotient, count, ~Limb {0});
        above = add(upper, {upper, count}, top);
    }
    multiply(scratch, {quotient, count}, divisor.first(below));
    above -= subtract(source, {source, size}, {scratch, size});
    while (above != 0) {
        const Limb one = 1;
        subtract(quotient, {quotient, count}, {&one, 1});
        above += add(source, {source, size}, divisor);
    }
}

} // namespace

LimbDivisor::LimbDivisor(Limb divisor) noexcept
    : m_shift(std::countl_zero(divisor))
    , m_divisor(divisor << m_shift)
    , m_reciprocal(reciprocalOf(m_divisor))
{
}

inline Limb LimbDivisor::divide(Limb upper, Limb lower, Limb* remainder) const noexcept
{
    const Wide estimate = static_cast<Wide>(m_reciprocal) * upper + wide(upper, lower);
    Limb quotient = high(estimate) + 1;
    Limb rest = lower - quotient * m_divisor;
    if (rest > static_cast<Limb>(estimate)) {
        --quotient;
        rest += m_divisor;
    }
    if (rest >= m_divisor) {
        ++quotient;
        rest -= m_divisor;
    }
    *remainder = rest;
    return quotient;
}

Limb LimbDivisor::divide(Limb* quotient, Natural source) const noexcept
{
    if (source.empty())
        return 0;
    const auto spill = [&](Limb value) { return value >> 1 >> (LIMB_BITS - 1 - m_shift); };
    Limb rest = spill(source.back());
    for (Size i = source.size(); i-- > 1;)
        quotient[i] = divide(rest, source[i] << m_shift | spill(source[i - 1]), &rest);
    quotient[0] = divide(rest, source[0] << m_shift, &rest);
    return rest >> m_shift;
}

void divide(Limb* quotient, Limb* remainder, Natural source, Natural divisor)
{
    const Size size = divisor.size();
    if (size == 1) {
        *remainder = LimbDivisor(divisor[0]).divide(quotient, source);
        return;
    }

    const int shift = std::countl_zero(divisor.back());
    Scratch scratch(source.size() + 1 + 2 * size);
    Limb* const rest = scratch.get();
    Limb* const shifted = rest + source.size() + 1;
    Limb* const product = shifted + size;
    shiftLeft(shifted, divisor, shift);
    rest[source.size()] = shiftLeft(rest, source, shift);

    // From the top in quotients of the divisor's length; only the first may be shorter.
    Size count = source.size() + 1 - size;
    if (count < recursiveDivide() || size < recursiveDivide()) {
        Division({shifted, size}).school(quotient, count, rest);
    } else {
        Size piece = (count - 1) % size + 1;
        for (; count > 0; piece = size) {
            count -= piece;
            divideByHalves(quotient + count, piece, rest + count, {shifted, size}, product);
        }
    }
    shiftRight(remainder, {rest, size}, shift);
}

} // namespace vx::math::detail
