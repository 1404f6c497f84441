#pragma once

#include "vx/Exception.h"
#include "vx/String.h"
#include "vx/math/BigDecimal.h"
#include "vx/math/BigInteger.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

// Big numbers as values: operators, literals and hashes.

namespace vx::math {

inline bool operator==(const BigInteger& left, const BigInteger& right)
{
    return left.compareTo(right) == 0
        || (left.getBitCount() == 0 && right.getBitCount() == 0); // a zero may have a sign
}
inline std::strong_ordering operator<=>(const BigInteger& left, const BigInteger& right)
{
    return left == right ? std::strong_ordering::equal : left.compareTo(right) <=> 0;
}

/// Zeros at the end of the fraction do not matter: 1.5 and 1.50 are equal.
inline bool operator==(const BigDecimal& left, const BigDecimal& right)
{
    return left.compareTo(right) == 0;
}
inline std::weak_ordering operator<=>(const BigDecimal& left, const BigDecimal& right)
{
    return left.compareTo(right) <=> 0;
}

namespace detail {

template <class T>
concept BigNumber = std::derived_from<T, BigInteger> || std::derived_from<T, BigDecimal>;

template <BigNumber T>
using BigOf = std::conditional_t<std::derived_from<T, BigInteger>, BigInteger, BigDecimal>;

} // namespace detail

template <detail::BigNumber Left>
detail::BigOf<Left>& operator+=(Left& left, const detail::BigOf<Left>& right)
{
    left.add(right);
    return left;
}
template <detail::BigNumber Left>
detail::BigOf<Left>& operator-=(Left& left, const detail::BigOf<Left>& right)
{
    left.subtract(right);
    return left;
}
template <detail::BigNumber Left>
detail::BigOf<Left>& operator*=(Left& left, const detail::BigOf<Left>& right)
{
    left.multiply(right);
    return left;
}
template <detail::BigNumber Left>
detail::BigOf<Left> operator-(Left number)
{
    number.negate();
    return number;
}
template <detail::BigNumber Left>
detail::BigOf<Left> operator+(Left left, const detail::BigOf<Left>& right)
{
    return std::move(left += right);
}
template <detail::BigNumber Left>
detail::BigOf<Left> operator-(Left left, const detail::BigOf<Left>& right)
{
    return std::move(left -= right);
}
template <detail::BigNumber Left>
detail::BigOf<Left> operator*(Left left, const detail::BigOf<Left>& right)
{
    return std::move(left *= right);
}

/// Truncated toward zero. Throws Exception with "Divide by zero.".
inline BigInteger& operator/=(BigInteger& left, const BigInteger& right)
{
    BigInteger remainder;
    left.divide(right, remainder);
    return left;
}
/// With the sign of `left`, as for `int`. Throws Exception with "Divide by zero.".
inline BigInteger& operator%=(BigInteger& left, const BigInteger& right)
{
    const bool isNegative = left.isNegative();
    BigInteger remainder;
    left.divide(right, remainder);
    if (isNegative && remainder.getBitCount() != 0)
        remainder.negate();
    left = std::move(remainder);
    return left;
}

inline BigInteger operator/(BigInteger left, const BigInteger& right)
{
    return std::move(left /= right);
}
inline BigInteger operator%(BigInteger left, const BigInteger& right)
{
    return std::move(left %= right);
}

} // namespace vx::math

namespace vx {

inline namespace literals {

/// `123_big`, decimal and of any length. Anything but digits throws Exception with "Number Format Exception".
inline math::BigInteger operator""_big(const char* digits)
{
    if (std::optional<math::BigInteger> number = math::BigInteger::tryParse(String(std::string_view(digits))))
        return *std::move(number);
    throw Exception(u"Number Format Exception");
}
/// `0.05_dec`, exactly; zeros at its end are dropped as by `tryParse`. Anything but digits and a point throws Exception with
/// "Number Format Exception".
inline math::BigDecimal operator""_dec(const char* digits)
{
    if (std::optional<math::BigDecimal> number = math::BigDecimal::tryParse(String(std::string_view(digits))))
        return *std::move(number);
    throw Exception(u"Number Format Exception");
}

} // namespace literals

} // namespace vx

/// Of the low 63 bits and the size: `hashCode` has only 32 bits.
template <>
struct std::hash<vx::math::BigInteger> {
    std::size_t operator()(const vx::math::BigInteger& number) const
    {
        return 31 * std::hash<std::int64_t>()(number.toInt64()) + static_cast<std::size_t>(number.getBitCount());
    }
};
/// Of the nearest `double`, because equal numbers may have different scales.
template <>
struct std::hash<vx::math::BigDecimal> {
    std::size_t operator()(const vx::math::BigDecimal& number) const { return std::hash<double>()(number.toDouble()); }
};
