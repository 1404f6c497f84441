#include "vx/Number.h"

#include "vx/String.h"
#include "vx/TerminatedText.h"
#include "vxsys/Number.h"

namespace vx {

Number::~Number() noexcept = default;

// Each conversion truncates the result of a wider one.
#define VX_CONVERT(operation, Type, wider)                                                                             \
    Type Number::operation() const                                                                                     \
    {                                                                                                                  \
        return static_cast<Type>(wider());                                                                             \
    }

VX_CONVERT(toByte, signed char, toInt8)
VX_CONVERT(toShort, short, toInt16)
VX_CONVERT(toInt, int, toInt32)
VX_CONVERT(toLong, std::int32_t, toInt32)
VX_CONVERT(toUByte, unsigned char, toUInt8)
VX_CONVERT(toUShort, unsigned short, toUInt16)
VX_CONVERT(toUInt, unsigned int, toUInt32)
VX_CONVERT(toULong, std::uint32_t, toUInt32)
VX_CONVERT(toFloat, float, toDouble)
VX_CONVERT(toInt8, signed char, toInt64)
VX_CONVERT(toInt16, short, toInt64)
VX_CONVERT(toInt32, std::int32_t, toInt64)
VX_CONVERT(toUInt8, unsigned char, toUInt64)
VX_CONVERT(toUInt16, unsigned short, toUInt64)
VX_CONVERT(toUInt32, std::uint32_t, toUInt64)
VX_CONVERT(toUInt64, std::uint64_t, toInt64)

bool Number::equals(const Object& other) const
{
    return compareTo(other) == 0;
}

std::uint32_t Number::hashCode() const
{
    return toULong();
}

#define VX_PARSE_SIGNED(operation, Type)                                                                               \
    Type Number::operation(const String& text)                                                                         \
    {                                                                                                                  \
        return static_cast<Type>(VXStrToIW(TerminatedText(text)));                                                     \
    }

VX_PARSE_SIGNED(parseInt, int)
VX_PARSE_SIGNED(parseLong, std::int32_t)
VX_PARSE_SIGNED(parseInt32, std::int32_t)
VX_PARSE_SIGNED(parseShort, short)
VX_PARSE_SIGNED(parseInt16, short)
VX_PARSE_SIGNED(parseByte, signed char)
VX_PARSE_SIGNED(parseInt8, signed char)

#define VX_PARSE_UNSIGNED(operation, Type)                                                                             \
    Type Number::operation(const String& text, int radix)                                                              \
    {                                                                                                                  \
        return static_cast<Type>(VXStrToULW(TerminatedText(text), nullptr, radix));                                    \
    }

VX_PARSE_UNSIGNED(parseUInt, unsigned int)
VX_PARSE_UNSIGNED(parseULong, std::uint32_t)
VX_PARSE_UNSIGNED(parseUInt32, std::uint32_t)
VX_PARSE_UNSIGNED(parseUShort, unsigned short)
VX_PARSE_UNSIGNED(parseUInt16, unsigned short)
VX_PARSE_UNSIGNED(parseUByte, unsigned char)
VX_PARSE_UNSIGNED(parseUInt8, unsigned char)

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
