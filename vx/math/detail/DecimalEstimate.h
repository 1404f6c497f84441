#pragma once

#include "vx/math/BigDecimal.h"

#include <cstdint>
#include <optional>

namespace vx::math {

/// An estimate of a number that is not 0: `m_mantissa` times 2 to the power of `m_exponent`, with a relative error of
/// at most 2 to the power of -ACCURACY. Its time hardly depends on the number of digits.
class BigDecimal::Estimate {
public:
    static constexpr int ACCURACY = 190;

    explicit Estimate(const BigDecimal& number);
    /// -1 or 1 if one of the numbers is certainly below the other, else 0.
    int compareTo(const Estimate& other) const;
    /// The nearest double, if the estimate decides it: not near the middle between two doubles, nor at the ends of
    /// their range.
    std::optional<double> toDouble() const;

private:
    static constexpr int LIMBS = 5, LIMB_BITS = 64;

    explicit Estimate(int value)
        : m_mantissa(value)
    {
    }

    static Estimate tenTo(std::int64_t exponent);
    void multiply(const Estimate& other);
    double rounded(const BigInteger& mantissa) const;

    BigInteger m_mantissa;
    std::int64_t m_exponent = 0;
};

} // namespace vx::math
