#include "vx/math/BigDecimal.h"

#include "vx/Exceptions.h"
#include "vx/String.h"
#include "vx/TerminatedText.h"
#include "vx/detail/TextRange.h"
#include "vx/detail/Truncated.h"
#include "vxsys/Number.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
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

/// As "%f" prints it in the C locale.
String printed(double value)
{
    char text[std::numeric_limits<double>::max_exponent10 + 16];
    const char* end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 6).ptr;
    return String(std::string_view(text, static_cast<std::size_t>(end - text)));
}

BigInteger powerOfTwo(std::int64_t exponent)
{
    BigInteger power;
    power.setBit(static_cast<int>(exponent));
    return power;
}

} // namespace

/// The size of a number that is not 0, in a time that hardly depends on its digits: `m_mantissa` times 2 to the power of
/// `m_exponent`, at most 1 part in 2 to the power of ACCURACY away from it.
class BigDecimal::Estimate {
public:
    static constexpr int ACCURACY = 190;

    explicit Estimate(const BigDecimal& number)
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

    /// -1 or 1 if one of the numbers is certainly below the other, else 0.
    int compareTo(const Estimate& other) const
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

    /// The nearest double, if that is certain: not between two of them, nor at the ends of their range.
    std::optional<double> toDouble() const
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

private:
    static constexpr int LIMBS = 5, LIMB_BITS = 64;

    explicit Estimate(int value)
        : m_mantissa(value)
    {
    }

    static Estimate tenTo(std::int64_t exponent)
    {
        Estimate result(1), square(10);
        for (; exponent != 0; exponent /= 2) {
            if (exponent % 2 != 0)
                result.multiply(square);
            square.multiply(square);
        }
        return result;
    }

    void multiply(const Estimate& other)
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

    double rounded(const BigInteger& mantissa) const
    {
        const auto limbs = mantissa.limbs();
        const int unused = std::countl_zero(limbs.back());
        std::uint64_t high = limbs.back() << unused;
        if (limbs.size() > 1) {
            const std::uint64_t next = limbs[limbs.size() - 2];
            if (unused != 0)
                high |= next >> (LIMB_BITS - unused);
            high |= 1; // there is more below, so that this is no half
        }
        const std::int64_t exponent = m_exponent + LIMB_BITS * static_cast<std::int64_t>(limbs.size() - 1) - unused;
        return std::ldexp(static_cast<double>(high), static_cast<int>(exponent));
    }

    BigInteger m_mantissa;
    std::int64_t m_exponent = 0;
};

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
