#include "vx/math/BigInteger.h"

#include "vx/Exceptions.h"
#include "vx/detail/CompareAs.h"
#include "vx/math/BigDecimal.h"
#include "vx/math/detail/Limbs.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

namespace vx::math {

namespace {

constexpr int LIMB_BYTES = sizeof(detail::Limb);
// The largest whole number of words whose bits can be counted in an `int`.
constexpr int LARGEST_SIZE = (std::numeric_limits<int>::max() / 8) & ~(LIMB_BYTES - 1);

constexpr detail::Size limbsFor(int bytes) noexcept
{
    return (static_cast<detail::Size>(bytes) + LIMB_BYTES - 1) / LIMB_BYTES;
}

/// Bytes without the zeros at the top.
int bytesIn(detail::Natural limbs)
{
    const detail::Size count = detail::trimmed(limbs.data(), limbs.size());
    if (count > limbsFor(LARGEST_SIZE))
        throwBadAllocation();
    if (count == 0)
        return 0;
    return static_cast<int>(count) * LIMB_BYTES - std::countl_zero(limbs[count - 1]) / 8;
}

std::int64_t bitsIn(detail::Natural limbs) noexcept
{
    if (limbs.empty())
        return 0;
    return static_cast<std::int64_t>(limbs.size()) * detail::LIMB_BITS - std::countl_zero(limbs.back());
}

void checkBitNumber(int n)
{
    if (n < 0)
        throw RangeErrorException(u"Bit number can't be negative.");
}

[[noreturn]] void throwDivideByZero()
{
    throw Exception(u"Divide by zero.");
}

} // namespace

const BigInteger BigInteger::ZERO;
const BigInteger BigInteger::ONE(1); // NOLINT(cert-err58-cpp): needs a few bytes when the library is loaded

BigInteger::BigInteger() noexcept = default;

BigInteger::BigInteger(const BigInteger& other)
    : Number(other)
{
    setLimbs(other.limbs(), other.m_negative);
}

BigInteger::BigInteger(BigInteger&& other) noexcept
    : Number(other)
    , m_negative(std::exchange(other.m_negative, false))
    , m_size(std::exchange(other.m_size, 0))
    , m_capacity(std::exchange(other.m_capacity, 0))
    , m_data(std::move(other.m_data))
{
}

// The same for each type of integers.
#define VX_FROM_INTEGER(Integer)                                                                                       \
    BigInteger::BigInteger(Integer value)                                                                              \
    {                                                                                                                  \
        setInteger(value);                                                                                             \
    }                                                                                                                  \
                                                                                                                       \
    BigInteger& BigInteger::operator=(Integer value)                                                                   \
    {                                                                                                                  \
        setInteger(value);                                                                                             \
        return *this;                                                                                                  \
    }

VX_FROM_INTEGER(int)
VX_FROM_INTEGER(unsigned int)
VX_FROM_INTEGER(long)
VX_FROM_INTEGER(unsigned long)
VX_FROM_INTEGER(long long)
VX_FROM_INTEGER(unsigned long long)

BigInteger::BigInteger(const signed char* bytes, int size, bool negative)
{
    setByteArray(bytes, size, negative);
}

BigInteger::~BigInteger() noexcept = default;

BigInteger& BigInteger::operator=(const BigInteger& other)
{
    setLimbs(other.limbs(), other.m_negative);
    return *this;
}

BigInteger& BigInteger::operator=(BigInteger&& other) noexcept
{
    if (this == &other)
        return *this;
    if (limbsFor(other.m_size) <= limbsFor(m_capacity)) { // nothing grows, so the storage is kept
        setLimbs(other.limbs(), other.m_negative);
    } else {
        m_negative = other.m_negative;
        m_size = other.m_size;
        m_capacity = std::exchange(other.m_capacity, 0);
        m_data = std::move(other.m_data);
    }
    other.m_negative = false;
    other.m_size = 0;
    return *this;
}

int BigInteger::compareTo(const Object& other) const
{
    return vx::detail::compareAs<Number>(
        *this, other, [&](const Number& number) { return compareTo(number.toBigInteger()); });
}

String BigInteger::toString() const
{
    return toString(10);
}

std::int64_t BigInteger::toInt64() const
{
    constexpr Limb LOW_BITS = std::numeric_limits<std::int64_t>::max();

    const auto magnitude = m_size > 0 ? static_cast<std::int64_t>(m_data[0] & LOW_BITS) : 0;
    return m_negative ? -magnitude : magnitude;
}

double BigInteger::toDouble() const
{
    return static_cast<double>(toInt64());
}

BigInteger BigInteger::toBigInteger() const
{
    return *this;
}

BigDecimal BigInteger::toBigDecimal() const
{
    return BigDecimal(*this, 0);
}

int BigInteger::getSize() const
{
    return m_size;
}

void BigInteger::add(const BigInteger& other)
{
    addLimbs(other.limbs(), other.m_negative);
}

void BigInteger::subtract(const BigInteger& other)
{
    addLimbs(other.limbs(), !other.m_negative);
}

void BigInteger::addLimbs(std::span<const Limb> others, bool otherNegative)
{
    const detail::Natural mine = limbs();
    if (m_negative == otherNegative) {
        if (mine.size() == 1 && others.size() == 1 && (mine[0] | others[0]) >> (detail::LIMB_BITS - 2) == 0) {
            const Limb sum = mine[0] + others[0]; // as below, but without a call: most numbers are small
            ensureCapacity(static_cast<int>((bitsIn({&std::max(mine[0], others[0]), 1}) + 9) / 8));
            m_data[0] = sum;
            m_size = bytesIn({&sum, 1});
            return;
        }
        const bool isSame = others.data() == mine.data();
        const std::int64_t bits = std::max(bitsIn(mine), bitsIn(others));
        setSize(static_cast<int>(std::min((bits + 9) / 8, LARGEST_SIZE + std::int64_t {1}))); // room for the carry
        if (isSame)
            others = {m_data.get(), others.size()}; // the storage may have moved
        detail::add(m_data.get(), {m_data.get(), limbsFor(m_size)}, others);
        truncateZeroBytes();
        return;
    }

    const int order = detail::compare(mine, others);
    if (order == 0) {
        m_size = 0;
        m_negative = false;
    } else if (order > 0) {
        detail::subtract(m_data.get(), mine, others);
        truncateZeroBytes();
    } else {
        const detail::Size count = mine.size();
        const int size = bytesIn(others);
        ensureCapacity(size);
        detail::subtract(m_data.get(), others, {m_data.get(), count});
        m_size = size;
        m_negative = otherNegative;
        truncateZeroBytes();
    }
}

void BigInteger::multiply(const BigInteger& other)
{
    const bool negative = m_negative != other.m_negative;
    const detail::Natural mine = limbs();
    const detail::Natural others = other.limbs();
    if (mine.empty() || others.empty()) {
        m_size = 0;
        m_negative = negative;
        return;
    }
    const detail::Size count = mine.size() + others.size();
    if (count > limbsFor(LARGEST_SIZE) + 1)
        throwBadAllocation();
    if (constexpr detail::Size FEW = 16; count <= FEW) { // copied in less time than a new array takes
        Limb product[FEW];
        detail::multiply(product, mine, others);
        setLimbs({product, count}, negative);
        return;
    }
    auto product = vx::detail::makeRawArray<Limb>(static_cast<std::int64_t>(count));
    detail::multiply(product.get(), mine, others);
    takeLimbs(std::move(product), count, negative);
}

void BigInteger::multiplyByLimb(Limb factor)
{
    const detail::Natural mine = limbs();
    const std::int64_t bits = bitsIn(mine) + static_cast<int>(std::bit_width(factor));
    setSize(static_cast<int>(std::min((bits + 7) / 8, LARGEST_SIZE + std::int64_t {1})));
    const Limb above = detail::multiplyByLimb(m_data.get(), {m_data.get(), mine.size()}, factor);
    if (mine.size() < limbsFor(m_size))
        m_data[mine.size()] = above;
    truncateZeroBytes();
}

void BigInteger::divideByLimb(Limb divisor)
{
    const detail::Natural mine = limbs();
    if (mine.size() == 1)
        m_data[0] /= divisor;
    else
        detail::LimbDivisor(divisor).divide(m_data.get(), mine);
    truncateZeroBytes();
    m_negative &= m_size != 0;
}

void BigInteger::divide(const BigInteger& divisor, BigInteger& remainder)
{
    const detail::Natural mine = limbs();
    const detail::Natural others = divisor.limbs();
    if (others.empty())
        throwDivideByZero();

    // The remainder is written first, so that this number gets the quotient if both are the same object.
    if (detail::compare(mine, others) < 0) {
        if (&remainder != this)
            remainder.setLimbs(mine, false);
        m_size = 0;
        m_negative = false;
        return;
    }
    const bool negative = m_negative != divisor.m_negative;
    const detail::Size count = mine.size() - others.size() + 1;
    detail::Scratch scratch(count + others.size());
    Limb* const rest = scratch.get() + count;
    const detail::Size restCount = others.size();
    detail::divide(scratch.get(), rest, mine, others);
    if (&remainder != this)
        remainder.setLimbs({rest, restCount}, false);
    setLimbs({scratch.get(), count}, negative);
}

void BigInteger::mod(const BigInteger& modulus)
{
    if (modulus.m_size == 0)
        throwDivideByZero();
    if (modulus.m_negative)
        throw Exception(u"Modulus can't be negative.");
    BigInteger quotient(*this);
    BigInteger rest;
    quotient.divide(modulus, rest);
    if (!m_negative) {
        *this = rest;
        return;
    }
    BigInteger result(modulus);
    result.subtract(rest);
    *this = result;
}

void BigInteger::negate()
{
    m_negative = !m_negative;
}

void BigInteger::abs()
{
    m_negative = false;
}

void BigInteger::setBit(int n)
{
    checkBitNumber(n);
    if (n / 8 >= m_size)
        setSize(n / 8 + 1);
    setBit(getData(), m_size, n);
}

void BigInteger::clearBit(int n)
{
    checkBitNumber(n);
    if (n / 8 < m_size)
        clearBit(getData(), m_size, n);
}

void BigInteger::setBit(signed char* bytes, int, int n)
{
    bytes[n / 8] = static_cast<signed char>(bytes[n / 8] | 1 << n % 8);
}

void BigInteger::clearBit(signed char* bytes, int, int n)
{
    bytes[n / 8] = static_cast<signed char>(bytes[n / 8] & ~(1 << n % 8));
}

signed char* BigInteger::getData()
{
    return reinterpret_cast<signed char*>(m_data.get());
}

int BigInteger::getBitCount() const
{
    if (m_size == 0)
        return 0;
    const Limb top = m_data[limbsFor(m_size) - 1] >> (m_size - 1) % LIMB_BYTES * 8;
    return 8 * (m_size - 1) + static_cast<int>(std::bit_width(top));
}

int BigInteger::compareTo(const BigInteger& other) const
{
    if (m_negative != other.m_negative)
        return m_negative ? -1 : 1;
    // Not by value alone: a zero byte at the top, left by `clearBit`, counts.
    const int bits = getBitCount();
    const int otherBits = other.getBitCount();
    const int order = bits != otherBits ? (bits < otherBits ? -1 : 1) : detail::compare(limbs(), other.limbs());
    return m_negative ? -order : order;
}

void BigInteger::ensureCapacity(int capacity)
{
    if (capacity <= m_capacity)
        return;
    if (capacity > LARGEST_SIZE)
        throwBadAllocation();
    if (limbsFor(capacity) > limbsFor(m_capacity)) {
        auto grown = vx::detail::makeRawArray<Limb>(static_cast<std::int64_t>(limbsFor(capacity)));
        std::copy_n(m_data.get(), limbsFor(m_size), grown.get());
        m_data = std::move(grown);
    }
    m_capacity = capacity;
}

void BigInteger::setSize(int size)
{
    ensureCapacity(size);
    m_size = std::min(m_size, std::max(size, 0));
    // From the size to the end of the last word that is used then.
    const detail::Size from = static_cast<detail::Size>(m_size);
    const detail::Size to = limbsFor(std::max(size, 0)) * LIMB_BYTES;
    if (from < to)
        std::memset(getData() + from, 0, to - from);
    m_size = std::max(size, 0);
}

void BigInteger::setByteArray(const signed char* bytes, int size, bool negative)
{
    setSize(size);
    if (m_size > 0)
        std::memmove(m_data.get(), bytes, static_cast<std::size_t>(m_size));
    m_negative = negative;
    truncateZeroBytes();
}

std::span<const BigInteger::Limb> BigInteger::limbs() const
{
    return {m_data.get(), detail::trimmed(m_data.get(), limbsFor(m_size))};
}

void BigInteger::truncateZeroBytes()
{
    m_size = bytesIn({m_data.get(), limbsFor(m_size)});
}

template <class Integer>
void BigInteger::setInteger(Integer value)
{
    using Unsigned = std::make_unsigned_t<Integer>;
    const bool negative = std::cmp_less(value, 0);
    const auto magnitude = static_cast<Unsigned>(negative ? Unsigned {0} - static_cast<Unsigned>(value) : value);
    setSize(sizeof(Integer));
    m_data[0] = magnitude;
    m_negative = negative;
    truncateZeroBytes();
}

void BigInteger::setLimbs(std::span<const Limb> limbs, bool negative)
{
    const int size = bytesIn(limbs);
    ensureCapacity(size);
    if (size > 0)
        std::memmove(m_data.get(), limbs.data(), limbsFor(size) * LIMB_BYTES);
    m_size = size;
    m_negative = negative;
}

void BigInteger::takeLimbs(vx::detail::RawArray<Limb> limbs, std::size_t count, bool negative)
{
    m_size = bytesIn({limbs.get(), count});
    m_capacity = static_cast<int>(std::min(count, limbsFor(LARGEST_SIZE))) * LIMB_BYTES;
    m_data = std::move(limbs);
    m_negative = negative;
}

} // namespace vx::math
