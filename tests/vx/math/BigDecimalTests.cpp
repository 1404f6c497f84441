#include "vx/math/BigDecimal.h"

#include "tests/vx/Common.h"

#include <clocale>
#include <new>

namespace vx::math {
namespace {

constexpr int LARGEST = std::numeric_limits<int>::max(), LEAST = std::numeric_limits<int>::min();

/// Digits, and the scale.
std::string shown(const BigDecimal& value)
{
    BigInteger unscaled = value.abs();
    if (value.isNegative())
        unscaled.negate();
    return (unscaled.isZero() && value.isNegative() ? "-" : "") + unscaled.toString().toUtf8() + " / "
        + std::to_string(value.getScale());
}

TEST(BigDecimal, ReadsTextAndNumbers)
{
    using Doubles = std::numeric_limits<double>;
    const std::pair<BigDecimal, const char*> rows[] = {{BigDecimal(u"1.000"), "10 / 1"},
        {BigDecimal(u"1.050"), "105 / 2"}, {BigDecimal(u"12."), "12 / 0"}, {BigDecimal(u".5"), "5 / 1"},
        {BigDecimal(u"-0.0"), "0 / 1"}, {BigDecimal(u"1.2.3"), "1002 / 3"}, // "2.3" is a group that reads as 2
        {BigDecimal(0.1), "1 / 1"}, {BigDecimal(-1e-7), "0 / 1"}, {BigDecimal(2.0 / 3), "666667 / 6"},
        {BigDecimal(-0.25F), "-25 / 2"}, {BigDecimal(-1e22), "-100000000000000000000000 / 1"},
        {BigDecimal(Doubles::infinity()), "0 / 0"}, {BigDecimal(Doubles::quiet_NaN()), "0 / 0"}};
    for (const auto& [value, wanted] : rows)
        EXPECT_EQ(shown(value), wanted);
    EXPECT_EQ(BigDecimal(std::numeric_limits<double>::max()).getSize(), 129) << "309 digits and one after the point";
    for (const char16_t* text : {u"", u".", u"-", u"-.", u"1.-5", u"--1"})
        EXPECT_THROW(BigDecimal {text}, Exception) << String(text);
    BigDecimal assigned(u"1.25");
    assigned = -0.125;
    EXPECT_EQ(shown(assigned), "-125 / 3");
    BigDecimal moved(std::move(assigned));
    EXPECT_EQ(shown(moved) + ", " + shown(assigned), "-125 / 3, 0 / 0");
    moved = BigDecimal(u"-1.5");
    EXPECT_EQ(shown(moved), "-15 / 1");
    const BigDecimal other(u"2.75");
    moved = other;
    EXPECT_EQ(shown(moved) + ", " + shown(other), "275 / 2, 275 / 2");
}

TEST(BigDecimal, TakesEveryInteger)
{
    const auto expectBoth = [](auto value) {
        BigDecimal assigned(u"1.25");
        assigned = value;
        for (const BigDecimal& made : {assigned, BigDecimal(value), BigInteger(value).toBigDecimal().toBigDecimal()})
            EXPECT_EQ(shown(made), std::to_string(value) + " / 0");
    };
    const auto expectAll = [&](auto... values) { (expectBoth(values), ...); };
    expectAll(std::numeric_limits<int>::min(), std::numeric_limits<unsigned>::max(), std::numeric_limits<long>::min(),
        std::numeric_limits<unsigned long>::max(), std::numeric_limits<long long>::max(),
        std::numeric_limits<unsigned long long>::max());
}

TEST(BigDecimal, PrintsTheWholeScale)
{
    const std::tuple<const char16_t*, int, const char16_t*, double, const char16_t*> rows[]
        = {{u"0", 2, u"0.00", 0, u"0"}, {u"-5", 2, u"-0.05", -0.05, u"0"}, {u"-1299", 2, u"-12.99", -12.99, u"-12"},
            {u"-7", -3, u"-7000", -7000, u"-7000"}, {u"0", LEAST, u"0", 0, u"0"}};
    for (const auto& [unscaled, scale, wanted, real, whole] : rows) {
        const BigDecimal value(BigInteger(unscaled, 10), scale);
        EXPECT_EQ(value.toString(), wanted);
        EXPECT_EQ(value.toDouble(), real) << String(wanted);
        EXPECT_EQ(value.toInt64(), static_cast<std::int64_t>(real)) << String(wanted);
        EXPECT_EQ(value.toBigInteger().toString(), whole);
    }
    BigDecimal minusZero(BigInteger(), 2);
    minusZero.negate();
    EXPECT_EQ(minusZero.toString(), u"-0.00");
    EXPECT_EQ(minusZero.compareTo(BigDecimal()), 0);
    BigInteger huge(10);
    huge.pow(BigInteger(400));
    EXPECT_EQ(BigDecimal(huge, 0).toDouble(), std::numeric_limits<double>::infinity());
    EXPECT_EQ(BigDecimal(huge, 399).toDouble(), 10.0);
    EXPECT_THROW(BigDecimal(BigInteger(1), LEAST).toString(), std::bad_alloc);
}

TEST(BigDecimal, RoundsQuotientsHalfAwayFromZero)
{
    const std::tuple<const char16_t*, const char16_t*, int, const char16_t*> rows[]
        = {{u"2", u"3", 2, u"0.67"}, {u"5", u"2", 0, u"3"}, {u"-5", u"2", 0, u"-3"}, {u"1", u"-3", 0, u"0"},
            {u"12350", u"1", -2, u"12400"}, // rounding adds a word
            {u"340282366920938463463374607431768211455", u"18446744073709551616", 0, u"18446744073709551616"}};
    for (const auto& [dividend, divisor, scale, wanted] : rows) {
        BigDecimal value(dividend);
        value.divide(BigDecimal(divisor), scale);
        EXPECT_EQ(value.toString(), wanted) << String(dividend) << " by " << String(divisor);
        EXPECT_EQ(value.getScale(), scale);
    }
    BigDecimal value(u"1.75");
    EXPECT_THROW(value.divide(BigDecimal(u"0.00"), 2), Exception);
    value.divide(value, 1);
    EXPECT_EQ(value.toString(), u"1.0");
}

TEST(BigDecimal, ComparesByValue)
{
    const BigInteger one(1), minusOne(-1);
    const std::tuple<BigDecimal, BigDecimal, int> rows[] = {{BigDecimal(BigInteger(150), 2), BigDecimal(u"1.5"), 0},
        {BigDecimal(u"-1.5"), BigDecimal(u"-1.51"), 1}, {BigDecimal(), BigDecimal(BigInteger(), 9), 0},
        // Scales so different that the numbers cannot have the same one.
        {BigDecimal(one, LARGEST), BigDecimal(one, LEAST), -1}, {BigDecimal(one, LARGEST), BigDecimal(), 1},
        {BigDecimal(minusOne, LARGEST), BigDecimal(minusOne, LEAST), 1}};
    for (const auto& [left, right, wanted] : rows) {
        EXPECT_EQ(left.compareTo(right), wanted);
        EXPECT_EQ(right.compareTo(left), -wanted);
    }
}

/// 100 million digits after the point, and as many before it. They are not printed.
TEST(BigDecimal, IsComparedAndRoundedHoweverFarItsScale)
{
    constexpr int FAR = 100'000'000;
    EXPECT_EQ(BigDecimal(BigInteger(1), FAR).toDouble(), 0.0);
    EXPECT_EQ(BigDecimal(BigInteger(-1), -FAR).toDouble(), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(BigDecimal(BigInteger(1), FAR).compareTo(BigDecimal(BigInteger(2), FAR)), -1);
    const std::tuple<const char16_t*, double, int> rows[] = {
        {u"-1.5", -1.5, -1}, {u"0.1", 0.1, 0}, {u"12345678901234567890.5", 12345678901234567890.5, 1},
        {u"9007199254740993", 9007199254740992.0, -1}, // a half: to the even one
    };
    for (const auto& [text, real, more] : rows) {
        BigDecimal value(text);
        BigDecimal other(value);
        value.setScale(20'000);
        EXPECT_EQ(value.toDouble(), real) << String(text);
        EXPECT_EQ(value.compareTo(other), 0) << String(text);
        value.add(BigDecimal(BigInteger(more), 20'000));
        EXPECT_EQ(value.compareTo(other), more) << String(text);
        other.add(BigDecimal(BigInteger(1), 30));
        EXPECT_TRUE(value.compareTo(other) == -1 && other.compareTo(value) == 1) << String(text);
    }
}

TEST(BigDecimal, IsComparedByWhatCallersWroteIntoItsData)
{
    BigDecimal value(BigInteger(0x1234), 0);
    value.getData()[1] = 0;
    EXPECT_EQ(value.compareTo(BigDecimal(0x34)), 0);
    EXPECT_EQ(value.compareTo(BigDecimal(0x35)), -1);
    value.getData()[0] = 0;
    EXPECT_EQ(value.compareTo(BigDecimal()), 0);
    EXPECT_EQ(value.compareTo(BigDecimal(-1)), 1);
    EXPECT_EQ(value.toDouble(), 0.0);
}

TEST(BigDecimal, KeepsItsValueWhenTheScaleGoesTooFar)
{
    BigDecimal value(BigInteger(-5), 2000000000);
    EXPECT_THROW(value.multiply(value), RangeErrorException);
    EXPECT_THROW(value.divide(value, LARGEST), RangeErrorException);
    EXPECT_THROW(value.add(BigDecimal(1)), std::bad_alloc);
    EXPECT_EQ(shown(value), "-5 / 2000000000");
    value.setScale(LEAST);
    EXPECT_EQ(shown(value), "0 / -2147483648");
}

TEST(BigDecimal, TakesThePointOfTheCLocale)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    for (const char* name : {"de_DE.UTF-8", "C.UTF-8"}) {
        std::setlocale(LC_ALL, name);
        EXPECT_EQ(BigDecimal(-1.25).toString(), u"-1.25");
        EXPECT_EQ(BigDecimal(u"1.25").toDouble(), 1.25);
    }
    std::setlocale(LC_ALL, before.c_str());
}

} // namespace
} // namespace vx::math
