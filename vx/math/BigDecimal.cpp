#include "vx/math/BigDecimal.h"

#include "vx/Exceptions.h"
#include "vx/String.h"
#include "vx/TerminatedText.h"
#include "vx/detail/TextRange.h"
#include "vx/detail/Truncated.h"
#include "vxsys/Number.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>
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

int signOf(const BigInteger& value)
{
    return value.isZero() ? 0 : value.isNegative() ? -1 : 1;
}

/// As "%f" prints it in the C locale.
String printed(double value)
{
    char text[std::numeric_limits<double>::max_exponent10 + 16];
    const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6).ptr;
    return String(std::string_view(text, static_cast<std::size_t>(end - text)));
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

BigDecimal::BigDecimal(const String& text)
{
    parseDecimal(text);
}

BigDecimal::BigDecimal(float value)
{
    parseDecimal(printed(value));
}

BigDecimal::BigDecimal(double value)
{
    parseDecimal(printed(value));
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

BigDecimal& BigDecimal::operator=(double value)
{
    parseDecimal(printed(value));
    return *this;
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

String BigDecimal::toString() const
{
    const String unscaled = m_unscaled.toString();
    std::u16string_view digits = unscaled.view();
    if (digits.front() == u'-')
        digits.remove_prefix(1);
    const auto count = static_cast<std::int64_t>(digits.size());
    // Digits in front of the point; a zero has no more than its one.
    const std::int64_t whole = m_scale < 0 && m_unscaled.isZero() ? count : count - m_scale;

    String text(vx::detail::withTerminator(std::max({count, whole, count - whole}) + 3)); // sign, zero and point
    if (isNegative())
        text += u'-';
    if (whole < 1) {
        text += u"0.";
        text.append(u'0', static_cast<int>(-whole));
        text.append(digits.data(), static_cast<int>(count));
        return text;
    }
    text.append(digits.data(), static_cast<int>(std::min(whole, count)));
    if (whole > count) {
        text.append(u'0', static_cast<int>(whole - count));
    } else if (whole < count) {
        text += u'.';
        text.append(digits.data() + whole, static_cast<int>(count - whole));
    }
    return text;
}

std::int64_t BigDecimal::toInt64() const
{
    return vx::detail::truncated(toDouble());
}

double BigDecimal::toDouble() const
{
    return VXStrToDW(TerminatedText(toString()), nullptr);
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
    if (other.m_scale < m_scale) {
        BigDecimal scaled(other);
        scaled.setScale(m_scale);
        m_unscaled.add(scaled.m_unscaled);
        return;
    }
    setScale(other.m_scale);
    m_unscaled.add(other.m_unscaled);
}

void BigDecimal::subtract(const BigDecimal& other)
{
    if (other.m_scale < m_scale) {
        BigDecimal scaled(other);
        scaled.setScale(m_scale);
        m_unscaled.subtract(scaled.m_unscaled);
        return;
    }
    setScale(other.m_scale);
    m_unscaled.subtract(other.m_unscaled);
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
        if (!m_unscaled.isZero())
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

int BigDecimal::compareTo(const BigDecimal& other) const
{
    const int sign = signOf(m_unscaled);
    const int otherSign = signOf(other.m_unscaled);
    if (sign != otherSign)
        return sign < otherSign ? -1 : 1;

    // Numbers of different size need not be brought to one scale, which may be far away.
    constexpr double DIGITS_IN_BIT = 0.301029995663981195;
    const double size = m_unscaled.getBitCount() * DIGITS_IN_BIT - m_scale;
    const double otherSize = other.m_unscaled.getBitCount() * DIGITS_IN_BIT - other.m_scale;
    if (size > otherSize + 1)
        return sign;
    if (otherSize > size + 1)
        return -sign;

    BigDecimal difference(*this);
    difference.subtract(other);
    return signOf(difference.m_unscaled);
}

void BigDecimal::parseDecimal(const String& text)
{
    const int point = text.indexOf(u'.');
    if (point < 0) {
        m_unscaled = BigInteger(text, 10);
        m_scale = 0;
        return;
    }
    String digits = text.substring(0, point);
    const std::u16string_view behind = text.view().substr(static_cast<std::size_t>(point) + 1);
    int scale = 0;
    if (!behind.empty()) {
        // Zeros at the end say nothing, but one digit stays.
        scale = static_cast<int>(std::max(behind.find_last_not_of(u'0') + 1, std::size_t {1}));
        digits.append(behind.data(), scale);
    }
    m_unscaled = BigInteger(digits, 10);
    m_scale = scale;
}

} // namespace vx::math
