#pragma once

#include "vx/Object.h"

#include <cstdint>

namespace vx::math {
class BigDecimal;
class BigInteger;
} // namespace vx::math

namespace vx {

class String;

/// Root of all number objects. Conversions truncate silently: of a value that does not fit, the low bits remain,
/// whatever the width or sign. A class implements `toInt64` and `toDouble`, on which all other conversions are based.
class VX_API Number : public Object {
public:
    Number() noexcept = default;
    Number(const Number&) noexcept = default;
    Number& operator=(const Number&) noexcept = default;
    ~Number() noexcept override;

    virtual std::int64_t toInt64() const = 0;
    virtual double toDouble() const = 0;
    virtual signed char toByte() const;
    virtual short toShort() const;
    virtual int toInt() const;
    virtual std::int32_t toLong() const;
    virtual unsigned char toUByte() const;
    virtual unsigned short toUShort() const;
    virtual unsigned int toUInt() const;
    virtual std::uint32_t toULong() const;
    virtual float toFloat() const;
    virtual math::BigInteger toBigInteger() const;
    /// Converts by `toDouble`, so the result has at most six digits after the point.
    virtual math::BigDecimal toBigDecimal() const;
    virtual signed char toInt8() const;
    virtual short toInt16() const;
    virtual std::int32_t toInt32() const;
    virtual unsigned char toUInt8() const;
    virtual unsigned short toUInt16() const;
    virtual std::uint32_t toUInt32() const;
    virtual std::uint64_t toUInt64() const;

    // Object
    /// True where `compareTo` gives 0: throws CastFailedException for an `other` that is no Number.
    bool equals(const Object& other) const override;
    /// The low 32 bits of the integer part.
    std::uint32_t hashCode() const override;

    /// The value that VXStrToIW reads, truncated to the type. A malformed text does not throw.
    static int parseInt(const String& text);
    static std::int32_t parseLong(const String& text);
    static std::int32_t parseInt32(const String& text);
    static short parseShort(const String& text);
    static short parseInt16(const String& text);
    static signed char parseByte(const String& text);
    static signed char parseInt8(const String& text);
    /// The value that VXStrToULW reads, truncated to the type. `radix` may be 0. A malformed text does not throw.
    static unsigned int parseUInt(const String& text, int radix);
    static std::uint32_t parseULong(const String& text, int radix);
    static std::uint32_t parseUInt32(const String& text, int radix);
    static unsigned short parseUShort(const String& text, int radix);
    static unsigned short parseUInt16(const String& text, int radix);
    static unsigned char parseUByte(const String& text, int radix);
    static unsigned char parseUInt8(const String& text, int radix);
    /// Reads the text as `math::BigInteger` does and throws what that throws. The result is that of its `toInt64`: the
    /// low 63 bits with the sign.
    static std::int64_t parseInt64(const String& text);
    static std::uint64_t parseUInt64(const String& text, int radix);
    /// The value that VXStrToDW reads. A malformed text does not throw.
    static double parseDouble(const String& text);
    static float parseFloat(const String& text);
    /// Decimal. Both throw Exception for a text that the constructor refuses.
    static math::BigInteger parseBigInteger(const String& text);
    static math::BigDecimal parseBigDecimal(const String& text);
};

/// Base of the signed boxes: prints the value in decimal.
class VX_API SignedInteger : public Number {
public:
    ~SignedInteger() noexcept override;

    // Object
    String toString() const override;
};

/// Base of the unsigned boxes: prints the value in any radix, never as a negative number.
class VX_API UnsignedInteger : public Number {
public:
    ~UnsignedInteger() noexcept override;

    // Number
    math::BigInteger toBigInteger() const override;

    // Object
    String toString() const override;

    /// `radix` is 2 to 36; another throws RangeErrorException unless the value is 0.
    virtual String toString(int radix) const;
};

} // namespace vx
