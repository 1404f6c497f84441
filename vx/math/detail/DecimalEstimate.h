#pragma once

#include "vx/math/BigDecimal.h"

#include <cstdint>
#include <optional>

namespace vx::math {

/// The size of a number that is not 0, in a time that hardly depends on its digits: `m_mantissa` times 2 to the power of
/// `m_exponent`, at most 1 part in 2 to the power of ACCURACY away from it.
class BigDecimal::Estimate {
public:
    static constexpr int ACCURACY = 190;

    explicit Estimate(const BigDecimal& number);
    /// -1 or 1 if one of the numbers is certainly below the other, else 0.
    int compareTo(const Estimate& other) const;
    /// The nearest double, if that is certain: not between two of them, nor at the ends of their range.
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
