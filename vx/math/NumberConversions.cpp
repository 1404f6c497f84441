#include "vx/Number.h"
#include "vx/String.h"
#include "vx/math/BigDecimal.h"
#include "vx/math/BigInteger.h"

namespace vx {

math::BigInteger Number::toBigInteger() const
{
    return math::BigInteger(toInt64());
}

math::BigDecimal Number::toBigDecimal() const
{
    return math::BigDecimal(toDouble());
}

std::int64_t Number::parseInt64(const String& text)
{
    return math::BigInteger(text, 10).toInt64();
}

std::uint64_t Number::parseUInt64(const String& text, int radix)
{
    return math::BigInteger(text, radix).toUInt64();
}

math::BigInteger Number::parseBigInteger(const String& text)
{
    return math::BigInteger(text, 10);
}

math::BigDecimal Number::parseBigDecimal(const String& text)
{
    return math::BigDecimal(text);
}

String SignedInteger::toString() const
{
    return math::BigInteger(toInt64()).toString(10);
}

math::BigInteger UnsignedInteger::toBigInteger() const
{
    return math::BigInteger(toUInt64());
}

String UnsignedInteger::toString(int radix) const
{
    return math::BigInteger(toUInt64()).toString(radix);
}

} // namespace vx
