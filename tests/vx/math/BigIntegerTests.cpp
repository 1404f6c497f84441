#include "vx/math/BigInteger.h"

#include "tests/vx/Common.h"

namespace vx::math {
namespace {

BigInteger big(const char16_t* text)
{
    return BigInteger(text);
}

BigInteger minusZero()
{
    BigInteger zero;
    zero.negate();
    return zero;
}

/// The value, with a minus for a zero with the flag, which itself prints like any zero.
std::string shown(const BigInteger& value)
{
    return (value.isZero() && value.isNegative() ? "-" : "") + value.toString().toUtf8();
}

std::string bytesOf(BigInteger value)
{
    std::string text;
    for (int place = 0; place < value.getSize(); ++place)
        text += std::to_string(static_cast<unsigned char>(value.getData()[place])) + ' ';
    return text;
}

std::string failureOf(const std::function<void()>& work)
{
    try {
        work();
        return "nothing";
    } catch (const RangeErrorException& failure) {
        return "range: " + failure.getDescription().toUtf8();
    } catch (const CastFailedException&) {
        return "cast failed";
    } catch (const Exception& failure) {
        return failure.getDescription().toUtf8();
    } catch (const std::bad_alloc&) {
        return "too large";
    }
}

/// The result of `work` on `value`, or its failure.
std::string comingTo(const BigInteger& value, const std::function<void()>& work)
{
    const std::string failure = failureOf(work);
    return failure == "nothing" ? shown(value) : failure;
}

TEST(BigInteger, KeepsTheMagnitudeInBytesAndTheSignApart)
{
    const signed char bytes[] = {1, -1, 0, 0};
    const std::tuple<BigInteger, const char*, const char*, int> rows[]
        = {{BigInteger(), "", "0", 0}, {BigInteger(256UL), "0 1 ", "256", 9},
            {BigInteger(std::numeric_limits<int>::min()), "0 0 0 128 ", "-2147483648", 32},
            {BigInteger(std::numeric_limits<long long>::min()), "0 0 0 0 0 0 0 128 ", "-9223372036854775808", 64},
            {BigInteger(~0ULL), "255 255 255 255 255 255 255 255 ", "18446744073709551615", 64},
            {BigInteger(bytes, 4, true), "1 255 ", "-65281", 16}, {BigInteger(bytes, -1, false), "", "0", 0},
            {BigInteger(bytes + 2, 2, true), "", "-0", 0}};
    for (const auto& [value, wantedBytes, text, bits] : rows) {
        EXPECT_EQ(bytesOf(value), wantedBytes);
        EXPECT_EQ(shown(value), text);
        EXPECT_EQ(value.getBitCount(), bits) << text;
    }
    BigInteger value(1ULL << 40);
    signed char* const data = value.getData();
    value = -7LL;
    EXPECT_EQ(shown(value), "-7");
    EXPECT_EQ(value.getData(), data) << "nothing grew";
    BigInteger moved(std::move(value));
    EXPECT_EQ(shown(moved) + shown(value), "-70");
    value = 7U;
    moved = std::move(value);
    EXPECT_EQ(shown(moved) + shown(value), "70");
}

TEST(BigInteger, ReadsAndPrintsText)
{
    const std::tuple<const char16_t*, int, const char*> rows[]
        = {{u"000123", 10, "123"}, {u"-12", 10, "-12"}, {u"-0", 10, "0"}, {u"-zz", 36, "-1295"},
            // Groups of three from the end, each read as far as possible.
            {u"12a45", 10, "12000"}, {u"1 5678", 10, "1678"}, {u"+12", 10, "12"}, {u"1000x1", 16, "1048577"},
            {u"-abc", 10, "-0"}, {u"\u0661\u0662", 10, "0"},
            // Not a radix: nothing is read. With 0 the prefix of the last group decides.
            {u"12345", 37, "0"}, {u"120x7", 0, "7"}, {u"12017", 0, "15"}};
    for (const auto& [text, radix, wanted] : rows)
        EXPECT_EQ(shown(BigInteger(text, radix)), wanted) << String(text) << " in " << radix;

    for (const char16_t* text : {u"", u"-", u"1-1", u"--1", u"0-", u"00-1"})
        EXPECT_EQ(failureOf([&] { BigInteger {text, 10}; }), "Number Format Exception") << String(text);

    EXPECT_EQ(BigInteger(-1295).toString(36), u"-zz");
    EXPECT_EQ(minusZero().toString(), u"0");
    for (const int radix : {-2, 0, 1, 37})
        EXPECT_EQ(failureOf([&] { BigInteger(5).toString(radix); }), "range: Radix must be from 2 to 36.");
    const String part(String::AcquireWrap, u"123456", 3);
    EXPECT_EQ(BigInteger(part, 10).toString(), u"123") << "the text goes on after its end";
}

TEST(BigInteger, DividesIntoItsArgumentsAndReducesToOneUpToTheModulus)
{
    BigInteger value(17), divisor(5);
    value.divide(divisor, value);
    EXPECT_EQ(shown(value), "3") << "the quotient is written last";
    value = 17;
    value.divide(divisor, divisor);
    EXPECT_EQ(shown(value) + ' ' + shown(divisor), "3 2");
    value.divide(value, divisor);
    EXPECT_EQ(shown(value) + ' ' + shown(divisor), "1 0");
    for (const BigInteger& number : {BigInteger(-6), minusZero()}) { // other numbers are those of the oracle
        value = number;
        value.mod(BigInteger(3));
        EXPECT_EQ(shown(value), "3");
    }
    value.mod(value);
    EXPECT_EQ(shown(value), "0");
}

TEST(BigInteger, CarriesTheSignOfAZero)
{
    const BigInteger zero, none = minusZero(), minusFive(-5);
    const std::tuple<BigInteger, void (BigInteger::*)(const BigInteger&), BigInteger, const char*> rows[]
        = {{minusFive, &BigInteger::multiply, zero, "-0"}, {none, &BigInteger::multiply, minusFive, "0"},
            {none, &BigInteger::add, none, "-0"}, {none, &BigInteger::subtract, zero, "-0"},
            {none, &BigInteger::pow, BigInteger::ONE, "-0"}};
    for (const auto& row : rows) {
        auto [value, operation, other, wanted] = row;
        (value.*operation)(other);
        EXPECT_EQ(shown(value), wanted) << &row - rows;
    }
    EXPECT_EQ(none.compareTo(zero), -1);
    EXPECT_EQ(zero.compareTo(none), 1);
    BigInteger absolute = none;
    absolute.abs();
    EXPECT_EQ(shown(absolute), "0");
}

TEST(BigInteger, SetsAndClearsBitsOfTheMagnitude)
{
    BigInteger value(-15);
    value.clearBit(3);
    value.clearBit(100);
    EXPECT_EQ(value.getSize(), 1);
    value.setBit(100);
    EXPECT_EQ(shown(value), "-1267650600228229401496703205383");
    // An empty byte at the top counts until the next operation.
    value.clearBit(100);
    EXPECT_EQ(value.getSize(), 13);
    EXPECT_EQ(value.getBitCount(), 96);
    EXPECT_EQ(value.compareTo(BigInteger(-8)), -1);
    value.add(BigInteger::ZERO);
    EXPECT_EQ(value.getSize(), 1);
    EXPECT_EQ(shown(value), "-7");
}

TEST(BigInteger, FindsDivisorsAndInverses)
{
    const std::tuple<const char16_t*, const char16_t*, const char*, const char*> rows[]
        = {{u"-12", u"5", "1", "3"}, {u"0", u"-9", "-9", "Divide by zero."},
            {u"5", u"0", "Divide by zero.", "Not invertible."}, {u"1", u"0", "Divide by zero.", "Divide by zero."},
            // For a negative number, the result of the defined steps, which need not be an inverse.
            {u"-3", u"7", "1", "2"}, {u"-1", u"7", "1", "Not invertible."}};
    for (const auto& [left, right, divisor, inverse] : rows) {
        BigInteger value = big(left), other = value;
        EXPECT_EQ(comingTo(value, [&, by = big(right)] { value.gcd(by); }), divisor) << String(left);
        EXPECT_EQ(comingTo(other, [&, by = big(right)] { other.modInverse(by); }), inverse) << String(left);
    }
}

TEST(BigInteger, RaisesToPowers)
{
    // The base, the exponent, the modulus or null for the power itself, and the result
    const std::tuple<const char16_t*, const char16_t*, const char16_t*, const char*> rows[] = {
        {u"-7", u"0", nullptr, "-7"}, // no round, no change
        {u"-1", u"99999999999999999999999999999999", nullptr, "-1"},
        {u"0", u"99999999999999999999999999999998", nullptr, "0"},
        {u"2", u"99999999999999999999999999999999", nullptr, "too large"}, {u"3", u"2147483648", nullptr, "too large"},
        {u"2", u"-1", nullptr, "Negative Exponent"}, {u"9", u"0", u"5", "4"}, // no round, then the residue
        {u"-10", u"3", u"5", "5"}, // a negative multiple
        {u"3", u"99999999999999999999", u"4", "3"}, {u"3", u"-2", u"7", "25"}, // the power of the inverse, not reduced
        {u"2", u"-1", u"4", "Not invertible."}, {u"2", u"5", u"0", "Divide by zero."}};
    for (const auto& [base, exponent, modulus, wanted] : rows) {
        BigInteger value = big(base);
        const BigInteger by = big(exponent);
        const auto raise
            = [&, modulus = modulus] { modulus == nullptr ? value.pow(by) : value.modPow(by, big(modulus)); };
        EXPECT_EQ(comingTo(value, raise), wanted) << String(base);
    }
}

TEST(BigInteger, LeavesTheNumberAsItWasWhenItFails)
{
    BigInteger value = big(u"-123456789012345678901234567890");
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"Divide by zero.", [&] { value.divide(BigInteger::ZERO, value); }},
        {"Divide by zero.", [&] { value.mod(minusZero()); }},
        {"Not invertible.", [&] { value.modPow(BigInteger(-5), BigInteger(10)); }},
        {"too large", [&] { value.modPow(BigInteger(std::numeric_limits<long long>::min()), BigInteger(11)); }},
        {"too large", [&] { value.pow(BigInteger(std::numeric_limits<int>::max())); }},
        {"too large", [&] { value.setBit(std::numeric_limits<int>::max()); }},
        {"range: Bit number can't be negative.", [&] { value.setBit(-1); }},
        {"cast failed", [&] { value.compareTo(static_cast<const Object&>(String(u"1"))); }},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(failureOf(row.second), row.first);
        EXPECT_EQ(shown(value), "-123456789012345678901234567890") << row.first;
    }
    // A divisor whose only bit was cleared has a byte, and still does not divide.
    BigInteger emptied(1);
    emptied.clearBit(0);
    EXPECT_FALSE(emptied.isZero());
    EXPECT_EQ(failureOf([&] { value.divide(emptied, value); }), "Divide by zero.");
    EXPECT_EQ(shown(emptied), "0");
}

} // namespace
} // namespace vx::math
