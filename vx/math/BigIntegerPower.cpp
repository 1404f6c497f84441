#include "vx/math/BigInteger.h"

#include "vx/Exception.h"
#include "vx/String.h"
#include "vx/math/detail/Limbs.h"
#include "vx/math/detail/LimbsModular.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

namespace vx::math {

namespace {

/// A power that is built word by word.
class Power {
public:
    explicit Power(detail::Size room)
        : m_limbs(vx::detail::makeRawArray<detail::Limb>(static_cast<std::int64_t>(room)))
        , m_product(vx::detail::makeRawArray<detail::Limb>(static_cast<std::int64_t>(room)))
    {
        m_limbs[0] = 1;
    }

    void square() { multiply({m_limbs.get(), m_count}); }
    void multiply(detail::Natural factor)
    {
        detail::multiply(m_product.get(), {m_limbs.get(), m_count}, factor);
        m_count = detail::trimmed(m_product.get(), m_count + factor.size());
        m_limbs.swap(m_product);
    }
    void shiftLeft(std::uint64_t bits)
    {
        const auto whole = static_cast<detail::Size>(bits / detail::LIMB_BITS);
        detail::Limb* const target = m_limbs.get() + whole;
        const auto rest = static_cast<int>(bits % detail::LIMB_BITS);
        std::copy_backward(m_limbs.get(), m_limbs.get() + m_count, target + m_count);
        target[m_count] = detail::shiftLeft(target, {target, m_count}, rest);
        std::fill_n(m_limbs.get(), whole, 0);
        m_count += whole + 1;
    }

    detail::Size count() const noexcept { return m_count; }
    vx::detail::RawArray<detail::Limb> take() noexcept { return std::move(m_limbs); }

private:
    vx::detail::RawArray<detail::Limb> m_limbs;
    vx::detail::RawArray<detail::Limb> m_product;
    detail::Size m_count = 1;
};

} // namespace

void BigInteger::gcd(const BigInteger& other)
{
    const detail::Natural mine = limbs();
    const detail::Natural others = other.limbs();
    if (others.empty())
        throw Exception(u"Divide by zero.");
    if (mine.empty()) {
        *this = other;
        return;
    }
    detail::Scratch scratch(std::min(mine.size(), others.size()));
    const detail::Natural divisor(scratch.get(), detail::greatestCommonDivisor(scratch.get(), mine, others));
    // If no further division was needed, the result is the other number unchanged.
    const bool isOther = detail::compare(divisor, others) == 0;
    setLimbs(divisor, isOther && other.m_negative);
}

void BigInteger::modInverse(const BigInteger& modulus)
{
    BigInteger factor0;
    BigInteger factor1(ONE);
    BigInteger dividend(modulus);
    BigInteger divisor(*this);
    BigInteger rest;
    BigInteger quotient(dividend);
    quotient.divide(divisor, rest);
    while (!rest.isZero()) {
        quotient.multiply(factor1);
        factor0.subtract(quotient);
        if (factor0.isNegative()) {
            factor0.abs();
            factor0.mod(modulus);
            factor0.negate();
            factor0.add(modulus);
        } else {
            factor0.mod(modulus);
        }
        std::swap(factor0, factor1);
        std::swap(dividend, divisor);
        std::swap(divisor, rest);
        quotient = dividend;
        quotient.divide(divisor, rest);
    }
    if (divisor.compareTo(ONE) != 0)
        throw Exception(u"Not invertible.");
    factor1.mod(modulus);
    *this = factor1;
}

void BigInteger::pow(const BigInteger& exponent)
{
    if (exponent.m_negative)
        throw Exception(u"Negative Exponent");
    const detail::Natural times = exponent.limbs();
    if (times.empty())
        return;
    const bool negative = m_negative && (times[0] & 1) != 0;
    const detail::Natural base = limbs();
    if (base.empty() || (base.size() == 1 && base[0] == 1)) {
        truncateZeroBytes();
        m_negative = negative;
        return;
    }

    // The power has at least (bits - 1) * exponent bits, and at most bits * exponent.
    constexpr std::uint64_t LARGEST = std::numeric_limits<int>::max();
    const std::uint64_t bits
        = base.size() * detail::LIMB_BITS - static_cast<unsigned int>(std::countl_zero(base.back()));
    if (times.size() > 1 || times[0] > LARGEST / (bits - 1))
        throwBadAllocation();
    Power power(static_cast<detail::Size>(bits * times[0] / detail::LIMB_BITS) + 3);

    // Trailing zero bits only shift the result: a power of ten becomes one of five.
    const detail::Size whole = static_cast<detail::Size>(
        std::find_if(base.begin(), base.end(), [](Limb limb) { return limb != 0; }) - base.begin());
    const int zeros = std::countr_zero(base[whole]);
    detail::Scratch scratch(base.size() - whole);
    detail::shiftRight(scratch.get(), base.subspan(whole), zeros);
    const detail::Natural odd(scratch.get(), detail::trimmed(scratch.get(), base.size() - whole));
    for (auto bit = static_cast<int>(std::bit_width(times[0])); bit-- > 0;) {
        power.square();
        if ((times[0] >> bit & 1) != 0)
            power.multiply(odd);
    }
    power.shiftLeft((whole * detail::LIMB_BITS + static_cast<unsigned int>(zeros)) * times[0]);
    const detail::Size count = power.count();
    takeLimbs(power.take(), count, negative);
}

void BigInteger::modPow(const BigInteger& exponent, const BigInteger& modulus)
{
    if (exponent.m_negative) {
        BigInteger result(*this);
        BigInteger times(exponent);
        times.abs();
        result.modInverse(modulus);
        result.pow(times);
        *this = result;
        return;
    }
    const detail::Natural times = exponent.limbs();
    const detail::Natural divisor = modulus.limbs();
    if (times.empty() || divisor.empty() || modulus.m_negative) {
        mod(modulus);
        return;
    }
    detail::Scratch scratch(divisor.size());
    detail::powerModulo(scratch.get(), limbs(), times, divisor);
    // As `mod` does for a number with the sign of the power.
    BigInteger result;
    result.setLimbs({scratch.get(), divisor.size()}, m_negative && (times[0] & 1) != 0);
    if (result.m_negative)
        result.add(modulus);
    *this = result;
}

} // namespace vx::math
