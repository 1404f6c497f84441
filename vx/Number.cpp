#include "vx/Number.h"

#include "vx/String.h"
#include "vx/TerminatedText.h"
#include "vxsys/Number.h"

namespace vx {

namespace {

std::int32_t readSigned(const String& text)
{
    return VXStrToIW(TerminatedText(text));
}

std::uint32_t readUnsigned(const String& text, int radix)
{
    return VXStrToULW(TerminatedText(text), nullptr, radix);
}

} // namespace

Number::~Number() noexcept = default;

signed char Number::toByte() const
{
    return toInt8();
}

short Number::toShort() const
{
    return toInt16();
}

int Number::toInt() const
{
    return toInt32();
}

std::int32_t Number::toLong() const
{
    return toInt32();
}

unsigned char Number::toUByte() const
{
    return toUInt8();
}

unsigned short Number::toUShort() const
{
    return toUInt16();
}

unsigned int Number::toUInt() const
{
    return toUInt32();
}

std::uint32_t Number::toULong() const
{
    return toUInt32();
}

float Number::toFloat() const
{
    return static_cast<float>(toDouble());
}

signed char Number::toInt8() const
{
    return static_cast<signed char>(toInt64());
}

short Number::toInt16() const
{
    return static_cast<short>(toInt64());
}

std::int32_t Number::toInt32() const
{
    return static_cast<std::int32_t>(toInt64());
}

unsigned char Number::toUInt8() const
{
    return static_cast<unsigned char>(toUInt64());
}

unsigned short Number::toUInt16() const
{
    return static_cast<unsigned short>(toUInt64());
}

std::uint32_t Number::toUInt32() const
{
    return static_cast<std::uint32_t>(toUInt64());
}

std::uint64_t Number::toUInt64() const
{
    return static_cast<std::uint64_t>(toInt64());
}

bool Number::equals(const Object& other) const
{
    return compareTo(other) == 0;
}

std::uint32_t Number::hashCode() const
{
    return toULong();
}

int Number::parseInt(const String& text)
{
    return readSigned(text);
}

std::int32_t Number::parseLong(const String& text)
{
    return readSigned(text);
}

std::int32_t Number::parseInt32(const String& text)
{
    return readSigned(text);
}

short Number::parseShort(const String& text)
{
    return static_cast<short>(readSigned(text));
}

short Number::parseInt16(const String& text)
{
    return static_cast<short>(readSigned(text));
}

signed char Number::parseByte(const String& text)
{
    return static_cast<signed char>(readSigned(text));
}

signed char Number::parseInt8(const String& text)
{
    return static_cast<signed char>(readSigned(text));
}

unsigned int Number::parseUInt(const String& text, int radix)
{
    return readUnsigned(text, radix);
}

std::uint32_t Number::parseULong(const String& text, int radix)
{
    return readUnsigned(text, radix);
}

std::uint32_t Number::parseUInt32(const String& text, int radix)
{
    return readUnsigned(text, radix);
}

unsigned short Number::parseUShort(const String& text, int radix)
{
    return static_cast<unsigned short>(readUnsigned(text, radix));
}

unsigned short Number::parseUInt16(const String& text, int radix)
{
    return static_cast<unsigned short>(readUnsigned(text, radix));
}

unsigned char Number::parseUByte(const String& text, int radix)
{
    return static_cast<unsigned char>(readUnsigned(text, radix));
}

unsigned char Number::parseUInt8(const String& text, int radix)
{
    return static_cast<unsigned char>(readUnsigned(text, radix));
}

double Number::parseDouble(const String& text)
{
    return VXStrToDW(TerminatedText(text), nullptr);
}

float Number::parseFloat(const String& text)
{
    return static_cast<float>(parseDouble(text));
}

SignedInteger::~SignedInteger() noexcept = default;

UnsignedInteger::~UnsignedInteger() noexcept = default;

String UnsignedInteger::toString() const
{
    return toString(10);
}

} // namespace vx
