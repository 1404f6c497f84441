#include "vx/math/BigDecimal.h"

#include "vx/Exceptions.h"
#include "vx/String.h"
#include "vx/TerminatedText.h"
#include "vx/detail/Truncated.h"
#include "vx/math/detail/DecimalEstimate.h"
#include "vxsys/Number.h"

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

BigDecimal::BigDecimal(int value)
    : m_unscaled(value)
{
}

BigDecimal::BigDecimal(unsigned int value)
    : m_unscaled(value)
{
}

BigDecimal::BigDecimal(long value)
    : m_unscaled(value)
{
}

BigDecimal::BigDecimal(unsigned long value)
    : m_unscaled(value)
{
}

BigDecimal::BigDecimal(long long value)
    : m_unscaled(value)
{
}

BigDecimal::BigDecimal(unsigned long long value)
    : m_unscaled(value)
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

template <class Integer>
BigDecimal& BigDecimal::setInteger(Integer value)
{
    m_unscaled = value;
    m_scale = 0;
    return *this;
}

BigDecimal& BigDecimal::operator=(int value)
{
    return setInteger(value);
}

BigDecimal& BigDecimal::operator=(unsigned int value)
{
    return setInteger(value);
}

BigDecimal& BigDecimal::operator=(long value)
{
    return setInteger(value);
}

BigDecimal& BigDecimal::operator=(unsigned long value)
{
    return setInteger(value);
}

BigDecimal& BigDecimal::operator=(long long value)
{
    return setInteger(value);
}

BigDecimal& BigDecimal::operator=(unsigned long long value)
{
    return setInteger(value);
}

int BigDecimal::compareTo(const Object& other) const
{
    if (&other == this)
        return 0;
    const auto* number = dynamic_cast<const Number*>(&other);
    if (number == nullptr)
        throw CastFailedException();
    return compareTo(number->toBigDecimal());
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
    combine(other, &BigInteger::add);
}

void BigDecimal::subtract(const BigDecimal& other)
{
    combine(other, &BigInteger::subtract);
}

void BigDecimal::combine(const BigDecimal& other, void (BigInteger::*operation)(const BigInteger&))
{
    if (other.m_scale < m_scale) {
        BigDecimal scaled(other);
        scaled.setScale(m_scale);
        (m_unscaled.*operation)(scaled.m_unscaled);
        return;
    }
    setScale(other.m_scale);
    (m_unscaled.*operation)(other.m_unscaled);
}

void BigDecimal::multiply(const BigDecimal& other)
{
    const int scale = checkedScale(std::int64_t {m_scale} + other.m_scale);
    m_unscaled.multiply(other.m_unscaled);
    m_scale = scale;
}

void BigDecimal::divide(const BigDecimal& divisor, int scale)
{
    // Whichever is scaled up: afterwards the scales differ by that of the result.
    BigDecimal upper(*this);
    BigDecimal lower(divisor);
    const std::int64_t upperScale = std::int64_t {divisor.m_scale} + scale;
    if (upperScale < m_scale)
        lower.setScale(checkedScale(std::int64_t {m_scale} - scale));
    else
        upper.setScale(checkedScale(upperScale));

    BigInteger rest;
    const bool negative = isNegative() != divisor.isNegative();
    upper.m_unscaled.divide(lower.m_unscaled, rest);
    if (!rest.isZero()) {
        rest.add(rest);
        lower.m_unscaled.abs();
        if (rest.compareTo(lower.m_unscaled) >= 0)
            upper.m_unscaled.add(BigInteger(negative ? -1 : 1));
    }
    m_unscaled = upper.m_unscaled;
    m_scale = scale;
}

void BigDecimal::setScale(int scale)
{
    const std::int64_t difference = std::int64_t {scale} - m_scale;
    if (difference > 0) {
        if (sign() != 0)
            m_unscaled.multiply(powerOfTen(difference));
    } else if (difference < 0) {
        if (-difference > m_unscaled.getBitCount() / 3) { // a power of ten has more than three bits for each zero
            m_unscaled = BigInteger::ZERO;
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

    // Numbers of different size need not be brought to one scale, which may be far away.
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
