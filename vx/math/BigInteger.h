#pragma once

#include "vx/Number.h"
#include "vx/detail/RawArray.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace vx::math {

/// A signed integer of any size, which every operation changes in place.
///
/// It is a magnitude and a flag: the magnitude's bytes stand least significant first, and a zero has no bytes. A zero
/// may carry the flag (`negate` gives it one); it then orders below a plain zero. A magnitude beyond 2^31 - 1 bits
/// throws std::bad_alloc; all other failures are a plain Exception, and a failure leaves the number as it was. One
/// thread at a time, except that several may read at once.
class VX_API BigInteger : public Number {
public:
    static const BigInteger ZERO;
    static const BigInteger ONE;

    BigInteger() noexcept;
    BigInteger(const BigInteger& other);
    /// The source becomes zero.
    BigInteger(BigInteger&& other) noexcept;
    explicit BigInteger(int value);
    explicit BigInteger(unsigned int value);
    explicit BigInteger(long value);
    explicit BigInteger(unsigned long value);
    explicit BigInteger(long long value);
    explicit BigInteger(unsigned long long value);
    /// Copies a magnitude, least significant byte first. A `size` below 1 is a zero.
    BigInteger(const signed char* bytes, int size, bool negative);
    /// A minus sign may come first. One elsewhere, or no digit, throws Exception with "Number Format Exception".
    /// Characters that are not digits in `radix` do not throw: digits are read in groups of three, counted from the
    /// end, and VXStrToLW gives the value of each group.
    BigInteger(const String& text, int radix);
    /// With the radix 10.
    explicit BigInteger(const String& text)
        : BigInteger(text, 10)
    {
    }
    ~BigInteger() noexcept override;

    /// Digits of `radix`, perhaps with a minus sign before them. Empty for any other text. A `radix` that is not 2 to
    /// 36 throws RangeErrorException.
    static std::optional<BigInteger> tryParse(std::u16string_view text, int radix = 10);

    /// Both keep the storage if it is large enough. After a move the source is zero.
    BigInteger& operator=(const BigInteger& other);
    BigInteger& operator=(BigInteger&& other) noexcept;
    BigInteger& operator=(int value);
    BigInteger& operator=(unsigned int value);
    BigInteger& operator=(long value);
    BigInteger& operator=(unsigned long value);
    BigInteger& operator=(long long value);
    BigInteger& operator=(unsigned long long value);

    // Object
    /// Compares with `toBigInteger` of `other`. Throws CastFailedException if `other` is not a Number.
    int compareTo(const Object& other) const override;
    String toString() const override;

    // Number
    /// The low 63 bits of the magnitude with the sign.
    std::int64_t toInt64() const override;
    /// `toInt64`, converted.
    double toDouble() const override;
    BigInteger toBigInteger() const override;
    BigDecimal toBigDecimal() const override;

    /// Bytes of the magnitude.
    virtual int getSize() const;

    void add(const BigInteger& other);
    void subtract(const BigInteger& other);
    void multiply(const BigInteger& other);
    /// This becomes the quotient, truncated toward zero; `remainder` becomes the remainder of the magnitudes, never
    /// negative. A zero quotient has no flag. If both are the same object, it gets the quotient. Throws "Divide by
    /// zero.".
    void divide(const BigInteger& divisor, BigInteger& remainder);
    /// From 0 to below `modulus`, but from 1 to `modulus` for a negative number, so that its multiples give `modulus`.
    /// Throws "Divide by zero." and "Modulus can't be negative.".
    void mod(const BigInteger& modulus);
    /// Not negative, unless `other` divides this number: then the result is `other` with its sign. Throws "Divide by
    /// zero." if `other` is 0.
    void gcd(const BigInteger& other);
    /// Throws "Not invertible.", "Divide by zero." for a zero and "Modulus can't be negative.". Of a negative number
    /// the result need not be the inverse: reduce it first.
    void modInverse(const BigInteger& modulus);
    /// An `exponent` of 0 leaves the number as it is. Throws "Negative Exponent".
    void pow(const BigInteger& exponent);
    /// The power, reduced as by `mod`. A negative `exponent` gives the power of the inverse, not reduced.
    void modPow(const BigInteger& exponent, const BigInteger& modulus);
    void negate();
    void abs();
    /// Bit `n` of the magnitude. An `n` below 0 throws RangeErrorException.
    void setBit(int n);
    /// Bytes that become 0 at the top stay in use until the next operation. An `n` below 0 throws RangeErrorException.
    void clearBit(int n);

    bool isNegative() const { return m_negative; }
    /// By size: a magnitude that `clearBit` brought to 0 still has bytes.
    bool isZero() const { return m_size == 0; }
    /// The magnitude itself, valid until an operation that grows it; null as long as there never was a byte.
    signed char* getData();
    /// The number of the magnitude's highest bit, plus 1.
    int getBitCount() const;
    /// -1, 0 or 1. Compares the flags first, also those of zeros.
    int compareTo(const BigInteger& other) const;
    /// Lower-case digits. `radix` is 2 to 36; another throws RangeErrorException unless the number is 0.
    String toString(int radix) const;

protected:
    /// Grows the storage to exactly `capacity` bytes; never shrinks it.
    void ensureCapacity(int capacity);
    /// New bytes are 0, so the top byte may be 0.
    void setSize(int size);
    void setByteArray(const signed char* bytes, int size, bool negative);

private:
    friend class BigDecimal;

    using Limb = std::uint64_t;

    static void setBit(signed char* bytes, int size, int n);
    static void clearBit(signed char* bytes, int size, int n);

    /// The magnitude in words, the highest of which is not 0.
    std::span<const Limb> limbs() const;
    void truncateZeroBytes();
    template <class Integer>
    void setInteger(Integer value);
    void setLimbs(std::span<const Limb> limbs, bool negative);
    void takeLimbs(vx::detail::RawArray<Limb> limbs, std::size_t count, bool negative);
    void addLimbs(std::span<const Limb> others, bool otherNegative);
    void multiplyByLimb(Limb factor);
    /// Truncated toward zero; a zero has no flag.
    void divideByLimb(Limb divisor);

    bool m_negative = false;
    int m_size = 0;
    int m_capacity = 0;
    /// Whole words; those bytes of the last one in use that lie beyond the size are 0.
    vx::detail::RawArray<Limb> m_data;
};

} // namespace vx::math
