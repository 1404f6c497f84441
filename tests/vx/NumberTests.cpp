#include "tests/vx/Common.h"
#include "vx/NumberBoxes.h"
#include "vx/math/BigDecimal.h"
#include "vx/math/BigInteger.h"

#include <typeinfo>

namespace vx {
namespace {

using math::BigDecimal;
using math::BigInteger;

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double ENDLESS = std::numeric_limits<double>::infinity();

static_assert(std::destructible<Integer8> && std::destructible<Double> && std::destructible<BigDecimal>);
static_assert(std::is_nothrow_move_constructible_v<BigInteger> && std::is_nothrow_move_constructible_v<BigDecimal>);
static_assert(!std::convertible_to<int, Integer32> && std::convertible_to<const char16_t*, String>);

TEST(NumberBoxes, ConvertByTruncationAndPrintInAnyRadix)
{
    constexpr std::int64_t LEAST = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t LARGEST = std::numeric_limits<std::int64_t>::max();
    const struct {
        std::unique_ptr<Number> box;
        std::int64_t integer;
        double real;
        const char16_t* text;
        const char16_t* big; ///< if it differs from the text
    } rows[] = {
        {std::make_unique<Integer8>(-128), -128, -128, u"-128", nullptr},
        {std::make_unique<Integer16>(-1), -1, -1, u"-1", nullptr},
        {std::make_unique<Integer32>(-2147483647 - 1), -2147483648LL, -2147483648.0, u"-2147483648", nullptr},
        {std::make_unique<Integer64>(LEAST), LEAST, -0x1p63, u"-9223372036854775808", nullptr},
        {std::make_unique<Integer64>(LARGEST), LARGEST, 0x1p63, u"9223372036854775807", nullptr},
        {std::make_unique<UInteger8>(200), 200, 200, u"200", nullptr},
        {std::make_unique<UInteger16>(65535), 65535, 65535, u"65535", nullptr},
        {std::make_unique<UInteger32>(4294967295U), 4294967295LL, 4294967295.0, u"4294967295", nullptr},
        // The double is that of the low 63 bits, as BigInteger converts.
        {std::make_unique<UInteger64>(~0ULL), -1, 0x1p63, u"18446744073709551615", nullptr},
        {std::make_unique<UInteger64>(0x8000000000000400ULL), LEAST + 1024, 1024, u"9223372036854776832", nullptr},
        {std::make_unique<Float>(-2.9F), -2, -2.9F, u"-2.9", u"-2"},
        {std::make_unique<Double>(2.9), 2, 2.9, u"2.9", u"2"},
        {std::make_unique<Double>(-2.9), -2, -2.9, u"-2.9", u"-2"},
        {std::make_unique<Double>(1234567.5), 1234567, 1234567.5, u"1.23457e+06", u"1234567"},
        {std::make_unique<Double>(ENDLESS), LARGEST, ENDLESS, u"inf", u"9223372036854775807"},
        {std::make_unique<Double>(-1e300), LEAST, -1e300, u"-1e+300", u"-9223372036854775808"},
        {std::make_unique<BigInteger>(-70000), -70000, -70000, u"-70000", nullptr},
        {std::make_unique<BigInteger>(1ULL << 63), 0, 0, u"9223372036854775808", nullptr},
        {std::make_unique<BigInteger>(u"-18446744073709551617", 10), -1, -1, u"-18446744073709551617", nullptr},
        {std::make_unique<BigDecimal>(u"-70000.75"), -70000, -70000.75, u"-70000.75", u"-70000"},
    };
    for (const auto& row : rows) {
        const Number& box = *row.box;
        SCOPED_TRACE(String(row.text).toUtf8());
        EXPECT_EQ(box.toInt64(), row.integer);
        EXPECT_EQ(box.toDouble(), row.real);
        EXPECT_EQ(box.toFloat(), static_cast<float>(row.real));
        const auto expectOne = [&](auto value) { // in the type of the operation
            EXPECT_EQ(value, static_cast<decltype(value)>(row.integer)) << typeid(value).name();
        };
        const auto expectCut = [&](auto... values) { (expectOne(values), ...); };
        expectCut(box.toByte(), box.toInt8(), box.toShort(), box.toInt16(), box.toInt(), box.toLong(), box.toInt32(),
            box.toUByte(), box.toUInt8(), box.toUShort(), box.toUInt16(), box.toUInt(), box.toULong(), box.toUInt32(),
            box.toUInt64(), box.hashCode());
        EXPECT_THROW(box.compareTo(String(u"1")), CastFailedException);
        EXPECT_THROW(box.equals(Object()), CastFailedException);
        EXPECT_EQ(box.toString(), row.text);
        EXPECT_EQ(box.toBigInteger().toString(), row.big != nullptr ? row.big : row.text);
    }
    EXPECT_EQ(Double(NOT_A_NUMBER).toInt64(), 0);
    EXPECT_EQ(Integer32(-5).toBigDecimal().toString(), u"-5.0");
    EXPECT_EQ(UInteger8(255).toString(2), u"11111111");
    EXPECT_EQ(UInteger64(~0ULL).toString(36), u"3w5e11264sgsf");
    EXPECT_EQ(UInteger16(0).toString(1), u"0");
    EXPECT_THROW(UInteger16(1).toString(1), RangeErrorException);
    EXPECT_THROW(UInteger16(1).toString(37), RangeErrorException);
}

TEST(NumberBoxes, TakeTheirOwnWidthOfANumberOrOfText)
{
    const Integer64 wide(0x1234567890ABCDEF);
    constexpr std::int64_t MOST = std::numeric_limits<std::int64_t>::max();
    const std::pair<std::int64_t, std::int64_t> integers[]
        = {{Integer8(wide), static_cast<signed char>(0xEF)}, {Integer16(wide), static_cast<short>(0xCDEF)},
            {Integer32(wide), static_cast<std::int32_t>(0x90ABCDEF)}, {Integer64(UInteger64(~0ULL)), -1},
            {UInteger8(wide), 0xEF}, {UInteger16(wide), 0xCDEF}, {UInteger32(wide), 0x90ABCDEF}, {Integer8(u"300"), 44},
            {Integer16(u" -70000x"), -4464}, {Integer32(u"99999999999"), 2147483647}, {Integer32(u""), 0},
            {Integer32(u"1-2"), 1}, {Integer64(u"-9223372036854775807"), -std::numeric_limits<std::int64_t>::max()},
            {UInteger8(u"-1"), 255}, {UInteger16(u"65537"), 1}, {UInteger32(u"4294967295"), 4294967295},
            // Of 64 bits, one is the sign's.
            {Integer64(u"-9223372036854775808"), 0}, {Number::parseInt64(u"9223372036854775808"), 0},
            {Number::parseShort(u"70000"), 4464}, {Number::parseInt16(u"-32769"), 32767},
            {Number::parseByte(u"200"), -56}, {Number::parseInt8(u"-129"), 127},
            {Number::parseLong(u"-2147483649"), std::numeric_limits<std::int32_t>::min()},
            {Number::parseUInt(u"0x1f", 0), 31}, {Number::parseULong(u"zz", 36), 1295},
            {Number::parseUShort(u"1ffff", 16), 65535}, {Number::parseUInt16(u"12", 3), 5},
            {Number::parseUByte(u"777", 8), 255}, {Number::parseUInt8(u"12", 37), 0},
            // As signed numbers.
            {UInteger64(Integer8(-1)), -1}, {UInteger64(Double(-1.5)), -1}, {Number::parseUInt64(u"-ff", 16), -255},
            {UInteger64(u"9223372036854775807"), MOST}, {UInteger64(u"18446744073709551615"), MOST}};
    for (const auto& row : integers)
        EXPECT_EQ(row.first, row.second) << "row " << &row - integers;
    const std::pair<double, double> reals[]
        = {{Float(Double(0.1)), 0.1F}, {Float(Double(1e300)), ENDLESS}, {Double(UInteger32(3000000000U)), 3e9},
            {Float(u"-1.5e1x"), -15}, {Double(u"0.1"), 0.1}, {Double(u"x"), 0}, {Number::parseFloat(u"1e39"), ENDLESS}};
    for (const auto& row : reals)
        EXPECT_EQ(row.first, row.second) << "row " << &row - reals;
    EXPECT_EQ(Number::parseBigDecimal(u"1.50").toString(), u"1.5");
    Integer16 assigned(1);
    EXPECT_EQ((assigned = Integer16(7)) + (assigned = -3), 4);

    for (const char16_t* text : {u"", u"-", u"1-2", u"12-", u"--1"}) {
        const std::function<void()> parsers[] = {[&] { Integer64 {text}; }, [&] { UInteger64 {text}; },
            [&] { Number::parseBigInteger(text); }, [&] { Number::parseBigDecimal(text); }};
        for (const auto& parse : parsers)
            EXPECT_EQ(saidBy<Exception>(parse), "Number Format Exception") << String(text);
    }
}

TEST(NumberBoxes, CompareInTheirOwnType)
{
    const auto compare = [](const auto& left, const Number& right) {
        const int result = left.compareTo(right);
        EXPECT_EQ(left.compareTo(static_cast<const Object&>(right)), result);
        EXPECT_EQ(left.equals(right), result == 0);
        return result;
    };
    const Integer32 least(std::numeric_limits<std::int32_t>::min());
    const UInteger64 top(1ULL << 63);
    const std::tuple<const char*, int, int> rows[] = {
        {"narrow: the difference", compare(Integer8(-128), Integer8(127)), -255},
        {"narrow: the other truncated", compare(Integer8(1), Integer32(257)), 0},
        {"not symmetric", compare(Integer32(257), Integer8(1)), 256},
        {"16 bits", compare(Integer16(32767), Integer16(-32768)), 65535},
        {"unsigned narrow", compare(UInteger8(0), Integer8(-1)), -255},
        {"unsigned 16 bits", compare(UInteger16(0), UInteger16(65535)), -65535},
        {"32 bits wrap around", compare(least, Integer32(1)), 2147483647},
        {"unsigned 32 bits wrap around", compare(UInteger32(0), UInteger32(4294967295U)), 1},
        {"64 bits", compare(Integer64(std::numeric_limits<std::int64_t>::min()), Integer64(1)), -1},
        {"64 bits, signed", compare(Integer64(0), top), 1},
        {"64 bits, unsigned", compare(top, Integer64(1)), 1},
        {"64 bits, equal", compare(UInteger64(~0ULL), Integer8(-1)), 0},
        {"a fraction is cut off", compare(Integer32(5), Double(5.7)), 0},
        {"but counts for a double", compare(Double(5.7), Integer32(5)), 1},
        {"a double below", compare(Double(-1), Float(0)), -1},
        {"a float sees a float", compare(Float(0.1F), Double(0.1)), 0},
        {"no number on the left", compare(Double(NOT_A_NUMBER), Integer8(0)), 1},
        {"no number on the right", compare(Float(0), Double(NOT_A_NUMBER)), 1},
        {"no number on both sides", compare(Double(NOT_A_NUMBER), Double(NOT_A_NUMBER)), 1},
        {"a big number", compare(BigInteger(5), Double(5.7)), 0},
        {"a decimal number", compare(BigDecimal(u"5.5"), Double(5.25)), 1},
    };
    for (const auto& [what, result, wanted] : rows)
        EXPECT_EQ(result, wanted) << what;
    const Double same(NOT_A_NUMBER);
    EXPECT_EQ(same.compareTo(same), 0);
    EXPECT_TRUE(same.equals(same));
}

template <class Box>
std::string parsed(const char16_t* text)
{
    const auto value = Box::tryParse(text);
    return value ? Box(*value).toString().toUtf8() : "";
}

TEST(NumberBoxes, AreParsedWholeOrNotAtAll)
{
    const std::tuple<const char16_t*, const char*, const char*, const char*, const char*> cases[]
        = {{u"0", "0", "0", "0", "0"}, {u"-128", "-128", "", "-128", "-128"}, {u"128", "", "128", "128", "128"},
            {u"000000000000000000000000000000000012", "12", "12", "12", "12"},
            {u"4294967296", "", "", "4294967296", "4.29497e+09"}, {u"9223372036854775808", "", "", "", "9.22337e+18"},
            {u"2.5", "", "", "", "2.5"}, {u"1e5", "", "", "", "100000"}};
    for (const auto& [text, int8, uint32, int64, real] : cases) {
        EXPECT_EQ(parsed<Integer8>(text), int8) << String(text);
        EXPECT_EQ(parsed<UInteger32>(text), uint32) << String(text);
        EXPECT_EQ(parsed<Integer64>(text), int64) << String(text);
        EXPECT_EQ(parsed<Double>(text), real) << String(text);
    }
    for (const char16_t* text :
        {u"1e999", u"inf", u"nan", u"", u"-", u"+5", u" 5", u"5 ", u"1,5", u"1.2.3", u"0x1", u"\u0135"})
        EXPECT_EQ(
            parsed<Integer8>(text) + parsed<UInteger32>(text) + parsed<Integer64>(text) + parsed<Double>(text), "");
    EXPECT_EQ(UInteger8::tryParse(u"fF", 16), 255);
    EXPECT_EQ(UInteger8::tryParse(std::u16string_view(u"1\0", 2)), std::nullopt);
    EXPECT_THROW(Integer32::tryParse(u"1", 37), RangeErrorException);
}

} // namespace
} // namespace vx
