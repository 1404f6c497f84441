#include "vx/NumberBoxes.h"

#include "vx/Exceptions.h"
#include "vx/String.h"
#include "vx/detail/Truncated.h"
#include "vx/math/BigInteger.h"

namespace vx {

namespace {

template <class Box>
int compareObjects(const Box& box, const Object& other)
{
    if (&other == &box)
        return 0;
    const auto* number = dynamic_cast<const Number*>(&other);
    if (number == nullptr)
        throw CastFailedException();
    return box.compareTo(*number);
}

/// The difference in 32 bits.
template <class Value>
int wrappedDifference(Value left, Value right) noexcept
{
    return static_cast<int>(static_cast<std::uint32_t>(left) - static_cast<std::uint32_t>(right));
}

/// 1 also where nothing orders the two.
template <class Value>
int order(Value left, Value right) noexcept
{
    return left == right ? 0 : left < right ? -1 : 1;
}

} // namespace

Integer8::Integer8(const Number& other)
    : m_value(other.toInt8())
{
}

Integer8::Integer8(const String& text)
    : m_value(static_cast<signed char>(Number::parseInt(text)))
{
}

Integer8::~Integer8() noexcept = default;

int Integer8::compareTo(const Object& other) const
{
    return compareObjects(*this, other);
}

String Integer8::toString() const
{
    return String::valueOf(int {m_value});
}

std::int64_t Integer8::toInt64() const
{
    return m_value;
}

double Integer8::toDouble() const
{
    return m_value;
}

int Integer8::compareTo(const Number& other) const
{
    return &other == this ? 0 : m_value - other.toInt8();
}

Integer16::Integer16(const Number& other)
    : m_value(other.toInt16())
{
}

Integer16::Integer16(const String& text)
    : m_value(static_cast<short>(Number::parseInt(text)))
{
}

Integer16::~Integer16() noexcept = default;

int Integer16::compareTo(const Object& other) const
{
    return compareObjects(*this, other);
}

String Integer16::toString() const
{
    return String::valueOf(int {m_value});
}

std::int64_t Integer16::toInt64() const
{
    return m_value;
}

double Integer16::toDouble() const
{
    return m_value;
}

int Integer16::compareTo(const Number& other) const
{
    return &other == this ? 0 : m_value - other.toInt16();
}

Integer32::Integer32(const Number& other)
    : m_value(other.toInt32())
{
}

Integer32::Integer32(const String& text)
    : m_value(Number::parseInt(text))
{
}

Integer32::~Integer32() noexcept = default;

int Integer32::compareTo(const Object& other) const
{
    return compareObjects(*this, other);
}

String Integer32::toString() const
{
    return String::valueOf(m_value);
}

std::int64_t Integer32::toInt64() const
{
    return m_value;
}

double Integer32::toDouble() const
{
    return m_value;
}

int Integer32::compareTo(const Number& other) const
{
    return &other == this ? 0 : wrappedDifference(m_value, other.toInt32());
}

Integer64::Integer64(const Number& other)
    : m_value(other.toInt64())
{
}

Integer64::Integer64(const String& text)
    : m_value(Number::parseInt64(text))
{
}

Integer64::~Integer64() noexcept = default;

int Integer64::compareTo(const Object& other) const
{
    return compareObjects(*this, other);
}

std::int64_t Integer64::toInt64() const
{
    return m_value;
}

double Integer64::toDouble() const
{
    return static_cast<double>(m_value);
}

int Integer64::compareTo(const Number& other) const
{
    return &other == this ? 0 : order(m_value, other.toInt64());
}

UInteger8::UInteger8(const Number& other)
    : m_value(other.toUInt8())
{
}

UInteger8::UInteger8(const String& text)
    : m_value(static_cast<unsigned char>(Number::parseUInt(text, 10)))
{
}

UInteger8::~UInteger8() noexcept = default;

int UInteger8::compareTo(const Object& other) const
{
    return compareObjects(*this, other);
}

String UInteger8::toString() const
{
    return String::valueOf(int {m_value});
}

std::int64_t UInteger8::toInt64() const
{
    return m_value;
}

double UInteger8::toDouble() const
{
    return m_value;
}

int UInteger8::compareTo(const Number& other) const
{
    return &other == this ? 0 : m_value - other.toUInt8();
}

UInteger16::UInteger16(const Number& other)
    : m_value(other.toUInt16())
{
}

UInteger16::UInteger16(const String& text)
    : m_value(static_cast<unsigned short>(Number::parseUInt(text, 10)))
{
}

UInteger16::~UInteger16() noexcept = default;

int UInteger16::compareTo(const Object& other) const
{
    return compareObjects(*this, other);
}

String UInteger16::toString() const
{
    return String::valueOf(static_cast<unsigned int>(m_value));
}

std::int64_t UInteger16::toInt64() const
{
    return m_value;
}

double UInteger16::toDouble() const
{
    return m_value;
}

int UInteger16::compareTo(const Number& other) const
{
    return &other == this ? 0 : m_value - other.toUInt16();
}

UInteger32::UInteger32(const Number& other)
    : m_value(other.toUInt32())
{
}

UInteger32::UInteger32(const String& text)
    : m_value(Number::parseUInt(text, 10))
{
}

UInteger32::~UInteger32() noexcept = default;

int UInteger32::compareTo(const Object& other) const
{
    return compareObjects(*this, other);
}

String UInteger32::toString() const
{
    return String::valueOf(m_value);
}

std::int64_t UInteger32::toInt64() const
{
    return m_value;
}

double UInteger32::toDouble() const
{
    return m_value;
}

int UInteger32::compareTo(const Number& other) const
{
    return &other == this ? 0 : wrappedDifference(m_value, other.toUInt32());
}

UInteger64::UInteger64(const Number& other)
    : m_value(other.toUInt64())
{
}

UInteger64::UInteger64(const String& text)
    : m_value(Number::parseUInt64(text, 10))
{
}

UInteger64::~UInteger64() noexcept = default;

int UInteger64::compareTo(const Object& other) const
{
    return compareObjects(*this, other);
}

std::int64_t UInteger64::toInt64() const
{
    return static_cast<std::int64_t>(m_value);
}

double UInteger64::toDouble() const
{
    return math::BigInteger(m_value).toDouble();
}

int UInteger64::compareTo(const Number& other) const
{
    return &other == this ? 0 : order(m_value, other.toUInt64());
}

Float::Float(const Number& other)
    : m_value(other.toFloat())
{
}

Float::Float(const String& text)
    : m_value(Number::parseFloat(text))
{
}

Float::~Float() noexcept = default;

int Float::compareTo(const Object& other) const
{
    return compareObjects(*this, other);
}

String Float::toString() const
{
    return String::valueOf(m_value);
}

std::int64_t Float::toInt64() const
{
    return detail::truncated(m_value);
}

double Float::toDouble() const
{
    return m_value;
}

int Float::compareTo(const Number& other) const
{
    return &other == this ? 0 : order(m_value, other.toFloat());
}

Double::Double(const Number& other)
    : m_value(other.toDouble())
{
}

Double::Double(const String& text)
    : m_value(Number::parseDouble(text))
{
}

Double::~Double() noexcept = default;

int Double::compareTo(const Object& other) const
{
    return compareObjects(*this, other);
}

String Double::toString() const
{
    return String::valueOf(m_value);
}

std::int64_t Double::toInt64() const
{
    return detail::truncated(m_value);
}

double Double::toDouble() const
{
    return m_value;
}

int Double::compareTo(const Number& other) const
{
    return &other == this ? 0 : order(m_value, other.toDouble());
}

} // namespace vx
