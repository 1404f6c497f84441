#pragma once

#include "vx/math/BigInteger.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace vx::math {

/// Which of the two nearest numbers replaces a number with too many digits.
enum class RoundingMode {
    UP, ///< the one away from zero
    DOWN, ///< the one toward zero
    CEILING, ///< the greater one
    FLOOR, ///< the smaller one
    HALF_UP, ///< the nearest; of two that are equally near, the one away from zero
    HALF_DOWN, ///< the nearest; of two that are equally near, the one toward zero
    HALF_EVEN ///< the nearest; of two that are equally near, the one whose last digit is even
};

/// A decimal number of any size, which every operation changes in place: an unscaled integer, and the scale, the number
/// of its digits after the point. 1.50 and 1.5 are equal and print differently. A negative scale stands for zeros in
/// front of the point.
///
/// A scale beyond 32 bits throws RangeErrorException, a number beyond the range of BigInteger std::bad_alloc. A failure
/// leaves the number as it was. One thread at a time, except that several may read at once.
class VX_API BigDecimal : public Number {
public:
    BigDecimal() noexcept;
    BigDecimal(const BigDecimal& other);
    /// The source becomes zero.
    BigDecimal(BigDecimal&& other) noexcept;
    BigDecimal(const BigInteger& unscaled, int scale);
    explicit BigDecimal(int value);
    explicit BigDecimal(unsigned int value);
    explicit BigDecimal(long value);
    explicit BigDecimal(unsigned long value);
    explicit BigDecimal(long long value);
    explicit BigDecimal(unsigned long long value);
    /// Digits with at most one point; no exponent. Trailing zeros after the point are dropped, except the first digit
    /// there. Throws what BigInteger throws for the digits, which also takes other units for digits: "1,50" becomes a
    /// wrong number. `tryParse` refuses such a text.
    BigDecimal(const String& text);
    /// Rounded to six digits after the point, then as from a text. Infinity and NaN give zero.
    explicit BigDecimal(float value);
    explicit BigDecimal(double value);
    ~BigDecimal() noexcept override;

    /// Digits, perhaps with a minus sign before them and a fraction after them: "-12", "0.50". Empty for any other
    /// text.
    /// Zeros at the end are dropped as by the constructor.
    static std::optional<BigDecimal> tryParse(std::u16string_view text);

    BigDecimal& operator=(const BigDecimal& other);
    BigDecimal& operator=(BigDecimal&& other) noexcept;
    BigDecimal& operator=(int value);
    BigDecimal& operator=(unsigned int value);
    BigDecimal& operator=(long value);
    BigDecimal& operator=(unsigned long value);
    BigDecimal& operator=(long long value);
    BigDecimal& operator=(unsigned long long value);
    BigDecimal& operator=(double value);

    // Object
    /// Compares with `toBigDecimal` of `other`. Throws CastFailedException if `other` is not a Number.
    int compareTo(const Object& other) const override;
    /// All digits of the scale, without an exponent.
    String toString() const override;

    // Number
    /// `toDouble`, truncated toward zero and clamped to the range.
    std::int64_t toInt64() const override;
    double toDouble() const override;
    /// Truncated toward zero.
    BigInteger toBigInteger() const override;
    BigDecimal toBigDecimal() const override;

    /// Bytes of the unscaled magnitude.
    virtual int getSize() const;

    /// The scale becomes the larger of the two.
    void add(const BigDecimal& other);
    void subtract(const BigDecimal& other);
    /// The scale becomes the sum of the two.
    void multiply(const BigDecimal& other);
    /// The result has exactly `scale`, rounded half away from zero. Throws Exception with "Divide by zero.".
    void divide(const BigDecimal& divisor, int scale);
    void divide(const BigDecimal& divisor, int scale, RoundingMode mode);
    /// A smaller scale truncates; nothing is rounded.
    void setScale(int scale);
    void setScale(int scale, RoundingMode mode);
    void negate();
    /// The unscaled value without its sign: not the absolute value of a number that has a scale.
    BigInteger abs() const;

    bool isNegative() const;
    int getScale() const { return m_scale; }
    /// The unscaled magnitude itself, valid until an operation that grows it.
    signed char* getData();
    /// -1, 0 or 1, by value.
    int compareTo(const BigDecimal& other) const;

protected:
    void parseDecimal(const String& text);

private:
    class Estimate;

    /// Increments the magnitude of a quotient if `mode` requires that. `rest` is not 0.
    static void round(
        BigInteger& quotient, BigInteger& rest, const BigInteger& divisor, bool negative, RoundingMode mode);
    /// Adds with that sign, after both have been brought to the larger scale.
    void combine(const BigDecimal& other, bool otherNegative);
    /// `divide` for few digits, without an allocation for the intermediate results. False if there are too many.
    bool divideFew(const BigDecimal& divisor, std::int64_t upperScale, int scale);
    /// Without zero bytes at the top, which callers may have written through `getData`.
    std::int64_t bitCount() const;
    int sign() const;

    BigInteger m_unscaled;
    int m_scale = 0;
};

} // namespace vx::math
