#include "vx/NumberBoxes.h"

#include "vx/Exceptions.h"
#include "vx/String.h"
#include "vx/detail/CompareAs.h"
#include "vx/detail/Truncated.h"
#include "vx/math/BigInteger.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>
#include <system_error>
#include <tuple>
#include <type_traits>

namespace vx {

namespace detail {

namespace {

constexpr int DECIMAL = 10;

template <class Value>
using Conversion = Value (Number::*)() const;
template <class Value>
using Parser = Value (*)(const String&);
template <class Value>
using RadixParser = Value (*)(const String&, int);

constexpr std::tuple CONVERSIONS(&Number::toInt8, &Number::toInt16, &Number::toInt32, &Number::toInt64,
    &Number::toUInt8, &Number::toUInt16, &Number::toUInt32, &Number::toUInt64, &Number::toFloat, &Number::toDouble);
constexpr std::tuple PARSERS(&Number::parseInt8, &Number::parseInt16, &Number::parseInt32, &Number::parseInt64,
    &Number::parseFloat, &Number::parseDouble);
constexpr std::tuple RADIX_PARSERS(
    &Number::parseUInt8, &Number::parseUInt16, &Number::parseUInt32, &Number::parseUInt64);

template <class Value>
Value convert(const Number& other)
{
    return (other.*std::get<Conversion<Value>>(CONVERSIONS))();
}

template <class Value>
Value parse(const String& text)
{
    if constexpr (std::is_unsigned_v<Value>)
        return std::get<RadixParser<Value>>(RADIX_PARSERS)(text, DECIMAL);
    else
        return std::get<Parser<Value>>(PARSERS)(text);
}

/// Parses the whole text with `std::from_chars`, which does not depend on the locale.
template <class Value, class... Form>
std::optional<Value> parseWhole(std::u16string_view text, Form... form)
{
    constexpr char16_t LAST_ASCII = 0x7F;
    std::string narrow(text.size(), '\0');
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] > LAST_ASCII)
            return {};
        narrow[index] = static_cast<char>(text[index]);
    }
    Value value {};
    // Clang instantiates each operation for all boxes, whatever it requires.
    if constexpr (requires { std::from_chars(nullptr, nullptr, value, form...); }) {
        const char* const end = narrow.data() + narrow.size();
        const std::from_chars_result result = std::from_chars(narrow.data(), end, value, form...);
        if (result.ec == std::errc() && result.ptr == end)
            return value;
    }
    return {};
}

} // namespace

template <class Base, class Value>
std::optional<Value> NumberBox<Base, Value>::tryParse(std::u16string_view text, int radix) requires std::integral<Value>
{
    constexpr int SMALLEST = 2, LARGEST = 36;
    if (radix < SMALLEST || radix > LARGEST)
        throw RangeErrorException();
    if constexpr (std::integral<Value>) // Clang 14 compiles it for the others as well
        return parseWhole<Value>(text, radix);
    return {};
}

template <class Base, class Value>
std::optional<Value> NumberBox<Base, Value>::tryParse(std::u16string_view text) requires std::floating_point<Value>
{
    if constexpr (std::floating_point<Value>) {
        const std::optional<Value> value = parseWhole<Value>(text, std::chars_format::general);
        if (value && std::isfinite(*value))
            return value;
    }
    return {};
}

template <class Base, class Value>
NumberBox<Base, Value>::NumberBox(const Number& other)
    : m_value(convert<Value>(other))
{
}

template <class Base, class Value>
NumberBox<Base, Value>::NumberBox(const String& text)
    : m_value(parse<Value>(text))
{
}

template <class Base, class Value>
NumberBox<Base, Value>::~NumberBox() noexcept = default;

template <class Base, class Value>
int NumberBox<Base, Value>::compareTo(const Object& other) const
{
    return compareAs<Number>(*this, other, [&](const Number& number) { return compareTo(number); });
}

template <class Base, class Value>
String NumberBox<Base, Value>::toString() const
{
    if constexpr (std::is_integral_v<Value> && sizeof(Value) == sizeof(std::int64_t))
        return Base::toString();
    else
        return String::valueOf(+m_value);
}

template <class Base, class Value>
std::int64_t NumberBox<Base, Value>::toInt64() const
{
    if constexpr (std::is_floating_point_v<Value>)
        return truncated(m_value);
    else
        return static_cast<std::int64_t>(m_value);
}

template <class Base, class Value>
double NumberBox<Base, Value>::toDouble() const
{
    if constexpr (std::is_same_v<Value, std::uint64_t>)
        return math::BigInteger(m_value).toDouble();
    else
        return static_cast<double>(m_value);
}

template <class Base, class Value>
int NumberBox<Base, Value>::compareTo(const Number& other) const
{
    if (&other == this)
        return 0;
    const auto value = convert<Value>(other);
    if constexpr (std::is_floating_point_v<Value> || sizeof(Value) == sizeof(std::int64_t))
        return m_value == value ? 0 : m_value < value ? -1 : 1;
    else // 32 bits: wraps around
        return static_cast<int>(static_cast<std::uint32_t>(m_value) - static_cast<std::uint32_t>(value));
}

template class NumberBox<SignedInteger, signed char>;
template class NumberBox<SignedInteger, short>;
template class NumberBox<SignedInteger, std::int32_t>;
template class NumberBox<SignedInteger, std::int64_t>;
template class NumberBox<UnsignedInteger, unsigned char>;
template class NumberBox<UnsignedInteger, unsigned short>;
template class NumberBox<UnsignedInteger, std::uint32_t>;
template class NumberBox<UnsignedInteger, std::uint64_t>;
template class NumberBox<Number, float>;
template class NumberBox<Number, double>;

} // namespace detail

Integer8::~Integer8() noexcept = default;
Integer16::~Integer16() noexcept = default;
Integer32::~Integer32() noexcept = default;
Integer64::~Integer64() noexcept = default;
UInteger8::~UInteger8() noexcept = default;
UInteger16::~UInteger16() noexcept = default;
UInteger32::~UInteger32() noexcept = default;
UInteger64::~UInteger64() noexcept = default;
Float::~Float() noexcept = default;
Double::~Double() noexcept = default;

} // namespace vx
