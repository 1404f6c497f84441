#include "vx/math/detail/DecimalEstimate.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <utility>

namespace vx::math {

namespace {

BigInteger powerOfTwo(std::int64_t exponent)
{
    BigInteger power;
    power.setBit(static_cast<int>(exponent));
    return power;
}

} // namespace

BigDecimal::Estimate::Estimate(const BigDecimal& number)
{
    const auto limbs = number.m_unscaled.limbs();
    const std::size_t used = std::min(limbs.size(), std::size_t {LIMBS});
    m_mantissa.setLimbs(limbs.last(used), false);
    m_exponent = LIMB_BITS * static_cast<std::int64_t>(limbs.size() - used);

    const Estimate power = tenTo(std::abs(std::int64_t {number.m_scale}));
    if (number.m_scale <= 0) {
        multiply(power);
        return;
    }
    BigInteger rest;
    m_mantissa.multiply(powerOfTwo(2 * LIMBS * LIMB_BITS));
    m_mantissa.divide(power.m_mantissa, rest);
    m_exponent -= 2 * LIMBS * LIMB_BITS + power.m_exponent;
}

int BigDecimal::Estimate::compareTo(const Estimate& other) const
{
    const std::int64_t top = m_exponent + m_mantissa.getBitCount();
    const std::int64_t otherTop = other.m_exponent + other.m_mantissa.getBitCount();
    if (std::abs(top - otherTop) > 1)
        return top < otherTop ? -1 : 1;
    const std::int64_t lowest = std::min(m_exponent, other.m_exponent);
    BigInteger difference = m_mantissa;
    difference.multiply(powerOfTwo(m_exponent - lowest));
    BigInteger subtrahend = other.m_mantissa;
    subtrahend.multiply(powerOfTwo(other.m_exponent - lowest));
    difference.subtract(subtrahend);
    if (difference.getBitCount() + lowest < top - ACCURACY + 2)
        return 0;
    return difference.isNegative() ? -1 : 1;
}

std::optional<double> BigDecimal::Estimate::toDouble() const
{
    constexpr int LEAST = -1000, GREATEST = 1000;
    const std::int64_t top = m_exponent + m_mantissa.getBitCount();
    if (top < LEAST || top > GREATEST)
        return std::nullopt;
    BigInteger error;
    error.setBit(m_mantissa.getBitCount() - ACCURACY);
    BigInteger least = m_mantissa, most = m_mantissa;
    least.subtract(error);
    most.add(error);
    const double result = rounded(least);
    return result == rounded(most) ? std::optional(result) : std::nullopt;
}

auto BigDecimal::Estimate::tenTo(std::int64_t exponent) -> Estimate
{
    Estimate result(1), square(10);
    for (; exponent != 0; exponent /= 2) {
        if (exponent % 2 != 0)
            result.multiply(square);
        square.multiply(square);
    }
    return result;
}

void BigDecimal::Estimate::multiply(const Estimate& other)
{
    m_mantissa.multiply(other.m_mantissa);
    m_exponent += other.m_exponent;
    const auto limbs = m_mantissa.limbs();
    if (limbs.size() <= LIMBS)
        return;
    m_exponent += LIMB_BITS * static_cast<std::int64_t>(limbs.size() - LIMBS);
    BigInteger high;
    high.setLimbs(limbs.last(LIMBS), false);
    m_mantissa = std::move(high);
}

double BigDecimal::Estimate::rounded(const BigInteger& mantissa) const
{
    const auto limbs = mantissa.limbs();
    const int unused = std::countl_zero(limbs.back());
    std::uint64_t high = limbs.back() << unused;
    if (limbs.size() > 1) {
        const std::uint64_t next = limbs[limbs.size() - 2];
        if (unused != 0)
            high |= next >> (LIMB_BITS - unused);
        high |= 1; // lower bits follow, so this is not exactly a half
    }
    const std::int64_t exponent = m_exponent + LIMB_BITS * static_cast<std::int64_t>(limbs.size() - 1) - unused;
    return std::ldexp(static_cast<double>(high), static_cast<int>(exponent));
}

} // namespace vx::math
