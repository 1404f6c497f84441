#include "vx/math/BigDecimal.h"

#include "vx/Exceptions.h"
#include "vx/String.h"
#include "vx/TerminatedText.h"
#include "vx/detail/CompareAs.h"
#include "vx/detail/Truncated.h"
#include "vx/math/detail/DecimalEstimate.h"
#include "vx/math/detail/Limbs.h"
#include "vxsys/Number.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <optional>
#include <utility>

namespace vx::math {

namespace {

int checkedScale(std::int64_t scale)
{
    if (scale < std::numeric_limits<int>::min() || scale > std::numeric_limits<int>::max())
        throw RangeErrorException(u"Scale out of range.");
    return static_cast<int>(scale);
}

constexpr int WORD_EXPONENT = 19; // of the largest power of ten that fits in one word

constexpr std::array<detail::Limb, WORD_EXPONENT + 1> WORD_POWERS = [] {
    std::array<detail::Limb, WORD_EXPONENT + 1> powers {1};
    for (std::size_t exponent = 1; exponent < powers.size(); ++exponent)
        powers[exponent] = 10 * powers[exponent - 1];
    return powers;
}();

constexpr detail::Limb wordPowerOfTen(std::int64_t exponent)
{
    return WORD_POWERS[static_cast<std::size_t>(exponent)];
}

/// A natural number of few words, times a power of ten from 0 to MOST_EXPONENT.
class FewLimbs {
public:
    static constexpr detail::Size MOST = 8;
    static constexpr int MOST_EXPONENT = 2 * WORD_EXPONENT;
    static constexpr detail::Size ROOM = MOST + 2;

    FewLimbs(detail::Natural value, std::int64_t exponent)
    {
        const std::int64_t first = std::min<std::int64_t>(exponent, WORD_EXPONENT);
        m_limbs[value.size()] = detail::multiplyByLimb(m_limbs, value, wordPowerOfTen(first));
        m_count = detail::trimmed(m_limbs, value.size() + 1);
        if (exponent > first) {
            m_limbs[m_count] = detail::multiplyByLimb(m_limbs, get(), wordPowerOfTen(exponent - first));
            m_count = detail::trimmed(m_limbs, m_count + 1);
        }
    }

    detail::Natural get() const { return {m_limbs, m_count}; }

private:
    detail::Limb m_limbs[ROOM];
    detail::Size m_count;
};

BigInteger powerOfTen(std::int64_t exponent)
{
    BigInteger power(10);
    power.pow(BigInteger(exponent));
    return power;
}

} // namespace

BigDecimal::BigDecimal() noexcept = default;

BigDecimal::BigDecimal(const BigDecimal& other) = default;

BigDecimal::BigDecimal(BigDecimal&& other) noexcept
    : Number(other)
    , m_unscaled(std::move(other.m_unscaled))
    , m_scale(std::exchange(other.m_scale, 0))
{
}

BigDecimal::BigDecimal(const BigInteger& unscaled, int scale)
    : m_unscaled(unscaled)
    , m_scale(scale)
{
}

BigDecimal::~BigDecimal() noexcept = default;

BigDecimal& BigDecimal::operator=(const BigDecimal& other) = default;

BigDecimal& BigDecimal::operator=(BigDecimal&& other) noexcept
{
    if (this != &other) {
        m_unscaled = std::move(other.m_unscaled);
        m_scale = std::exchange(other.m_scale, 0);
    }
    return *this;
}

// The same for each type of integers.
#define VX_FROM_INTEGER(Integer)                                                                                       \
    BigDecimal::BigDecimal(Integer value)                                                                              \
        : m_unscaled(value)                                                                                            \
    {                                                                                                                  \
    }                                                                                                                  \
                                                                                                                       \
    BigDecimal& BigDecimal::operator=(Integer value)                                                                   \
    {                                                                                                                  \
        m_unscaled = value;                                                                                            \
        m_scale = 0;                                                                                                   \
        return *this;                                                                                                  \
    }

VX_FROM_INTEGER(int)
VX_FROM_INTEGER(unsigned int)
VX_FROM_INTEGER(long)
VX_FROM_INTEGER(unsigned long)
VX_FROM_INTEGER(long long)
VX_FROM_INTEGER(unsigned long long)

int BigDecimal::compareTo(const Object& other) const
{
    return vx::detail::compareAs<Number>(
        *this, other, [&](const Number& number) { return compareTo(number.toBigDecimal()); });
}

std::int64_t BigDecimal::toInt64() const
{
    return vx::detail::truncated(toDouble());
}

double BigDecimal::toDouble() const
{
    constexpr std::int64_t FEW_BITS = 4096;
    if (bitCount() > FEW_BITS) {
        if (const std::optional<double> size = Estimate(*this).toDouble())
            return isNegative() ? -*size : *size;
    }
    String text = m_unscaled.toString();
    if (isNegative() && text[0] != u'-') // a zero
        text = u"-" + text;
    text += u'e';
    text += String::valueOf(-std::int64_t {m_scale});
    return VXStrToDW(TerminatedText(text), nullptr);
}

BigInteger BigDecimal::toBigInteger() const
{
    BigDecimal whole(*this);
    whole.setScale(0);
    return std::move(whole.m_unscaled);
}

BigDecimal BigDecimal::toBigDecimal() const
{
    return *this;
}

int BigDecimal::getSize() const
{
    return m_unscaled.getSize();
}

void BigDecimal::add(const BigDecimal& other)
{
    combine(other, other.isNegative());
}

void BigDecimal::subtract(const BigDecimal& other)
{
    combine(other, !other.isNegative());
}

void BigDecimal::combine(const BigDecimal& other, bool otherNegative)
{
    const std::int64_t difference = std::int64_t {m_scale} - other.m_scale;
    if (difference <= 0) {
        setScale(other.m_scale);
        m_unscaled.addLimbs(other.m_unscaled.limbs(), otherNegative);
        return;
    }
    const detail::Natural others = other.m_unscaled.limbs();
    if (difference <= FewLimbs::MOST_EXPONENT && others.size() <= FewLimbs::MOST) {
        m_unscaled.addLimbs(FewLimbs(others, difference).get(), otherNegative);
        return;
    }
    BigDecimal scaled(other);
    scaled.setScale(m_scale);
    m_unscaled.addLimbs(scaled.m_unscaled.limbs(), otherNegative);
}

void BigDecimal::multiply(const BigDecimal& other)
{
    const int scale = checkedScale(std::int64_t {m_scale} + other.m_scale);
    m_unscaled.multiply(other.m_unscaled);
    m_scale = scale;
}

void BigDecimal::divide(const BigDecimal& divisor, int scale)
{
    if (!divideFew(divisor, std::int64_t {divisor.m_scale} + scale, scale))
        divide(divisor, scale, RoundingMode::HALF_UP);
}

bool BigDecimal::divideFew(const BigDecimal& divisor, std::int64_t upperScale, int scale)
{
    const std::int64_t exponent = upperScale - m_scale;
    const detail::Natural mine = m_unscaled.limbs();
    const detail::Natural others = divisor.m_unscaled.limbs();
    if (std::abs(exponent) > FewLimbs::MOST_EXPONENT || others.empty()
        || std::max(mine.size(), others.size()) > FewLimbs::MOST)
        return false;
    if (exponent < 0)
        checkedScale(std::int64_t {m_scale} - scale);
    else
        checkedScale(upperScale);

    const FewLimbs upper(mine, std::max<std::int64_t>(exponent, 0));
    const FewLimbs lower(others, std::max<std::int64_t>(-exponent, 0));
    const detail::Natural dividend = upper.get();
    const detail::Natural lowest = lower.get();
    detail::Limb quotient[FewLimbs::ROOM + 1];
    detail::Limb rest[FewLimbs::ROOM + 1];
    detail::Size count = 1;
    if (detail::compare(dividend, lowest) < 0) {
        quotient[0] = 0;
        std::copy(dividend.begin(), dividend.end(), rest);
        std::fill(rest + dividend.size(), rest + lowest.size(), 0);
    } else if (dividend.size() == 1) {
        quotient[0] = dividend[0] / lowest[0];
        rest[0] = dividend[0] % lowest[0];
    } else {
        count = dividend.size() - lowest.size() + 1;
        detail::divide(quotient, rest, dividend, lowest);
    }
    const detail::Limb above = detail::shiftLeft(rest, {rest, lowest.size()}, 1);
    if (above != 0 || detail::compare(rest, lowest.data(), lowest.size()) >= 0) {
        const detail::Limb one = 1;
        quotient[count] = detail::add(quotient, {quotient, count}, {&one, 1});
        ++count;
    }
    const detail::Natural result(quotient, detail::trimmed(quotient, count));
    m_unscaled.setLimbs(result, !result.empty() && isNegative() != divisor.isNegative());
    m_scale = scale;
    return true;
}

void BigDecimal::divide(const BigDecimal& divisor, int scale, RoundingMode mode)
{
    // Scale up one of the two, so that their scales differ by that of the result.
    BigDecimal upper(*this);
    BigDecimal lower(divisor);
    const std::int64_t upperScale = std::int64_t {divisor.m_scale} + scale;
    if (upperScale < m_scale)
        lower.setScale(checkedScale(std::int64_t {m_scale} - scale));
    else
        upper.setScale(checkedScale(upperScale));
    const bool negative = isNegative() != divisor.isNegative();
    BigInteger rest;
    upper.m_unscaled.divide(lower.m_unscaled, rest);
    if (!rest.isZero()) {
        lower.m_unscaled.abs();
        round(upper.m_unscaled, rest, lower.m_unscaled, negative, mode);
    }
    m_unscaled = std::move(upper.m_unscaled);
    m_scale = scale;
}

void BigDecimal::round(
    BigInteger& quotient, BigInteger& rest, const BigInteger& divisor, bool negative, RoundingMode mode)
{
    rest.add(rest);
    const int half = rest.compareTo(divisor); // the rest beside half of the divisor
    const bool isOdd = !quotient.isZero() && (quotient.getData()[0] & 1) != 0;
    const bool isUp = mode == RoundingMode::UP || (mode == RoundingMode::CEILING && !negative)
        || (mode == RoundingMode::FLOOR && negative) || (mode == RoundingMode::HALF_UP && half >= 0)
        || (mode == RoundingMode::HALF_DOWN && half > 0)
        || (mode == RoundingMode::HALF_EVEN && (half > 0 || (half == 0 && isOdd)));
    if (isUp)
        quotient.add(BigInteger(negative ? -1 : 1));
}

void BigDecimal::setScale(int scale, RoundingMode mode)
{
    const std::int64_t fewer = std::int64_t {m_scale} - scale;
    if (fewer <= 0 || sign() == 0)
        return setScale(scale);
    BigInteger quotient;
    if (fewer > m_unscaled.getBitCount() / 3) { // the number is less than half of the power of ten
        BigInteger rest(1);
        round(quotient, rest, BigInteger(3), isNegative(), mode);
    } else {
        const BigInteger divisor = powerOfTen(fewer);
        BigInteger rest;
        quotient = m_unscaled;
        quotient.divide(divisor, rest);
        if (!rest.isZero())
            round(quotient, rest, divisor, isNegative(), mode);
    }
    m_unscaled = std::move(quotient);
    m_scale = scale;
}

void BigDecimal::setScale(int scale)
{
    const std::int64_t difference = std::int64_t {scale} - m_scale;
    if (difference > 0) {
        if (sign() != 0 && difference <= WORD_EXPONENT)
            m_unscaled.multiplyByLimb(wordPowerOfTen(difference));
        else if (sign() != 0)
            m_unscaled.multiply(powerOfTen(difference));
    } else if (difference < 0) {
        if (-difference > m_unscaled.getBitCount() / 3) { // a power of ten has more than three bits per zero
            m_unscaled = BigInteger::ZERO;
        } else if (-difference <= WORD_EXPONENT) {
            m_unscaled.divideByLimb(wordPowerOfTen(-difference));
        } else {
            BigInteger rest;
            m_unscaled.divide(powerOfTen(-difference), rest);
        }
    }
    m_scale = scale;
}

void BigDecimal::negate()
{
    m_unscaled.negate();
}

BigInteger BigDecimal::abs() const
{
    BigInteger magnitude(m_unscaled);
    magnitude.abs();
    return magnitude;
}

bool BigDecimal::isNegative() const
{
    return m_unscaled.isNegative();
}

signed char* BigDecimal::getData()
{
    return m_unscaled.getData();
}

std::int64_t BigDecimal::bitCount() const
{
    const auto limbs = m_unscaled.limbs();
    return limbs.empty() ? 0 : 64 * static_cast<std::int64_t>(limbs.size()) - std::countl_zero(limbs.back());
}

int BigDecimal::sign() const
{
    return m_unscaled.limbs().empty() ? 0 : isNegative() ? -1 : 1;
}

int BigDecimal::compareTo(const BigDecimal& other) const
{
    const int ours = sign();
    const int theirs = other.sign();
    if (ours != theirs)
        return ours < theirs ? -1 : 1;
    if (ours == 0)
        return 0;

    // Numbers of clearly different size are compared without bringing them to one scale, which may take many digits.
    constexpr double DIGITS_IN_BIT = 0.301029995663981195;
    const double size = static_cast<double>(bitCount()) * DIGITS_IN_BIT - m_scale;
    const double otherSize = static_cast<double>(other.bitCount()) * DIGITS_IN_BIT - other.m_scale;
    if (size > otherSize + 1)
        return ours;
    if (otherSize > size + 1)
        return -ours;

    constexpr std::int64_t NEAR = 1000;
    if (std::abs(std::int64_t {m_scale} - other.m_scale) > NEAR) {
        if (const int order = Estimate(*this).compareTo(Estimate(other)))
            return ours * order;
    }
    BigDecimal difference(*this);
    difference.subtract(other);
    return difference.sign();
}

} // namespace vx::math
