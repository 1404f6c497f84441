#include "vx/math/BigInteger.h"

#include "vx/Exceptions.h"
#include "vx/String.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace vx::math {
namespace {

BigInteger big(const char16_t* text)
{
    return BigInteger(text, 10);
}

BigInteger minusZero()
{
    BigInteger zero;
    zero.negate();
    return zero;
}

/// The value, and that of a zero with the flag, which prints as any zero.
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

/// What the work throws.
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

TEST(BigInteger, KeepsTheMagnitudeInBytesAndTheSignApart)
{
    const signed char bytes[] = {1, -1, 0, 0};
    const struct {
        BigInteger value;
        const char* bytes;
        const char* shown;
        int bits;
    } rows[] = {
        {BigInteger(), "", "0", 0},
        {BigInteger(0), "", "0", 0},
        {BigInteger(255UL), "255 ", "255", 8},
        {BigInteger(256UL), "0 1 ", "256", 9},
        {BigInteger(-1), "1 ", "-1", 1},
        {BigInteger(std::numeric_limits<int>::min()), "0 0 0 128 ", "-2147483648", 32},
        {BigInteger(std::numeric_limits<long long>::min()), "0 0 0 0 0 0 0 128 ", "-9223372036854775808", 64},
        {BigInteger(~0ULL), "255 255 255 255 255 255 255 255 ", "18446744073709551615", 64},
        {BigInteger(4000000000U), "0 40 107 238 ", "4000000000", 32},
        {BigInteger(bytes, 4, true), "1 255 ", "-65281", 16},
        {BigInteger(bytes, 0, true), "", "-0", 0},
        {BigInteger(bytes, -1, false), "", "0", 0},
        {BigInteger(bytes + 2, 2, true), "", "-0", 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(bytesOf(row.value), row.bytes);
        EXPECT_EQ(shown(row.value), row.shown);
        EXPECT_EQ(row.value.getBitCount(), row.bits) << row.shown;
    }
    EXPECT_EQ(BigInteger().getData(), nullptr);

    BigInteger value;
    for (const auto& assign : std::vector<std::function<void()>> {
             [&] { value = -7; }, [&] { value = -7L; }, [&] { value = -7LL; }, [&] { value = BigInteger(-7); }}) {
        value = 1ULL << 40;
        signed char* const data = value.getData();
        assign();
        EXPECT_EQ(shown(value), "-7");
        EXPECT_EQ(value.getData(), data) << "nothing grew";
    }
    BigInteger moved(std::move(value));
    EXPECT_EQ(shown(moved) + shown(value), "-70");
    value = 7U;
    moved = std::move(value);
    EXPECT_EQ(shown(moved) + shown(value), "70");
    EXPECT_EQ(shown(BigInteger::ZERO) + shown(BigInteger::ONE), "01");
}

TEST(BigInteger, ReadsAndPrintsText)
{
    const struct {
        const char16_t* text;
        int radix;
        const char* wanted;
    } rows[] = {
        {u"000123", 10, "123"},
        {u"-12", 10, "-12"},
        {u"0", 10, "0"},
        {u"000", 10, "0"},
        {u"-0", 10, "0"},
        {u"FfFfFfFfFfFfFfFfF", 16, "295147905179352825855"},
        {u"-zz", 36, "-1295"},
        // Groups of three from the end, each as far as it can be read.
        {u"12a45", 10, "12000"},
        {u"1 5678", 10, "1678"},
        {u"+12", 10, "12"},
        {u"x1234", 10, "234"},
        {u"1000x1", 16, "1048577"},
        {u"129", 8, "10"},
        {u"-abc", 10, "-0"},
        {u"\u0661\u0662", 10, "0"},
        // No radix: nothing is read, and 0 goes by the prefix of the last group.
        {u"12345", 37, "0"},
        {u"12345", 1, "0"},
        {u"120x7", 0, "7"},
        {u"12017", 0, "15"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(shown(BigInteger(row.text, row.radix)), row.wanted) << String(row.text) << " in " << row.radix;

    for (const char16_t* text : {u"", u"-", u"1-1", u"--1", u"0-", u"00-1"})
        EXPECT_EQ(failureOf([&] { BigInteger {text, 10}; }), "Number Format Exception") << String(text);

    EXPECT_EQ(BigInteger(4096).toString(16), u"1000");
    EXPECT_EQ(BigInteger(-1295).toString(36), u"-zz");
    EXPECT_EQ(BigInteger(0).toString(99), u"0");
    EXPECT_EQ(minusZero().toString(), u"0");
    for (const int radix : {-2, 0, 1, 37})
        EXPECT_EQ(failureOf([&] { BigInteger(5).toString(radix); }), "range: Radix must be from 2 to 36.");
    const String part(String::AcquireWrap, u"123456", 3);
    EXPECT_EQ(BigInteger(part, 10).toString(), u"123") << "the text goes on behind its end";
}

TEST(BigInteger, DividesMagnitudes)
{
    const struct {
        const char16_t *dividend, *divisor;
        const char* wanted;
    } rows[] = {
        {u"-7", u"2", "-3 1"},
        {u"7", u"-2", "-3 1"},
        {u"-7", u"-2", "3 1"},
        {u"1", u"2", "0 1"},
        {u"-1", u"2", "0 1"},
        {u"-5", u"5", "-1 0"},
        {u"0", u"-5", "0 0"},
        {u"-340282366920938463463374607431768211456", u"18446744073709551616", "-18446744073709551616 0"},
    };
    for (const auto& row : rows) {
        BigInteger value = big(row.dividend);
        BigInteger rest(-99);
        value.divide(big(row.divisor), rest);
        EXPECT_EQ(shown(value) + ' ' + shown(rest), row.wanted);
    }

    BigInteger value(17);
    value.divide(BigInteger(5), value);
    EXPECT_EQ(shown(value), "3") << "the quotient is written last";
    BigInteger divisor(5);
    value = 17;
    value.divide(divisor, divisor);
    EXPECT_EQ(shown(value) + ' ' + shown(divisor), "3 2");
    value.divide(value, divisor);
    EXPECT_EQ(shown(value) + ' ' + shown(divisor), "1 0");
}

TEST(BigInteger, ReducesNegativeNumbersToOneUpToTheModulus)
{
    const struct {
        const char16_t* value;
        const char* wanted;
    } rows[] = {{u"-7", "2"}, {u"-6", "3"}, {u"-3", "3"}, {u"-1", "2"}, {u"0", "0"}, {u"6", "0"}, {u"7", "1"}};
    for (const auto& row : rows) {
        BigInteger value = big(row.value);
        value.mod(BigInteger(3));
        EXPECT_EQ(shown(value), row.wanted) << String(row.value);
    }
    BigInteger value = minusZero();
    value.mod(BigInteger(3));
    EXPECT_EQ(shown(value), "3");
    value.mod(value);
    EXPECT_EQ(shown(value), "0");
}

TEST(BigInteger, CarriesTheSignOfAZero)
{
    const auto result
        = [](BigInteger value, void (BigInteger::*operation)(const BigInteger&), const BigInteger& other) {
              (value.*operation)(other);
              return shown(value);
          };
    const BigInteger five(5);
    const BigInteger minusFive(-5);
    EXPECT_EQ(result(minusFive, &BigInteger::multiply, BigInteger()), "-0");
    EXPECT_EQ(result(minusZero(), &BigInteger::multiply, minusFive), "0");
    EXPECT_EQ(result(minusZero(), &BigInteger::add, minusZero()), "-0");
    EXPECT_EQ(result(minusZero(), &BigInteger::subtract, BigInteger()), "-0");
    EXPECT_EQ(result(BigInteger(), &BigInteger::add, minusZero()), "0");
    EXPECT_EQ(result(minusFive, &BigInteger::add, five), "0");
    EXPECT_EQ(result(minusFive, &BigInteger::subtract, minusFive), "0");
    EXPECT_EQ(result(minusZero(), &BigInteger::add, five), "5");
    EXPECT_EQ(result(minusZero(), &BigInteger::pow, BigInteger(3)), "-0");
    EXPECT_EQ(result(minusZero(), &BigInteger::pow, BigInteger(4)), "0");
    EXPECT_EQ(failureOf([&] { result(five, &BigInteger::pow, minusZero()); }), "Negative Exponent");

    EXPECT_EQ(minusZero().compareTo(BigInteger()), -1);
    EXPECT_EQ(BigInteger().compareTo(minusZero()), 1);
    EXPECT_EQ(minusZero().compareTo(minusZero()), 0);
    BigInteger absolute = minusZero();
    absolute.abs();
    EXPECT_EQ(shown(absolute), "0");
}

TEST(BigInteger, SetsAndClearsBitsOfTheMagnitude)
{
    BigInteger value(-15);
    value.clearBit(3);
    EXPECT_EQ(shown(value), "-7");
    value.clearBit(100);
    EXPECT_EQ(value.getSize(), 1);
    value.setBit(100);
    EXPECT_EQ(value.getSize(), 13);
    EXPECT_EQ(shown(value), "-1267650600228229401496703205383");

    // An empty byte at the top counts as it stands, until the next operation.
    value.clearBit(100);
    EXPECT_EQ(value.getSize(), 13);
    EXPECT_EQ(value.getBitCount(), 96);
    EXPECT_EQ(value.compareTo(BigInteger(-8)), -1);
    EXPECT_EQ(shown(value), "-7");
    EXPECT_EQ(BigInteger(value).getSize(), 1);
    value.add(BigInteger::ZERO);
    EXPECT_EQ(value.getSize(), 1);
    EXPECT_EQ(shown(value), "-7");
}

TEST(BigInteger, FindsDivisorsAndInverses)
{
    const struct {
        const char16_t *left, *right;
        const char* divisor;
        const char* inverse;
    } rows[] = {
        {u"12", u"18", "6", "Not invertible."},
        {u"12", u"-4", "-4", "Modulus can't be negative."},
        {u"12", u"-8", "4", "Modulus can't be negative."},
        {u"-12", u"5", "1", "3"},
        {u"0", u"-9", "-9", "Divide by zero."},
        {u"5", u"0", "Divide by zero.", "Not invertible."},
        {u"1", u"0", "Divide by zero.", "Divide by zero."},
        {u"3", u"7", "1", "5"},
        {u"10", u"7", "1", "5"},
        {u"5", u"1", "1", "0"},
        // Of a negative number, what the steps give, which need not be an inverse.
        {u"-3", u"7", "1", "2"},
        {u"-5", u"7", "1", "3"},
        {u"-1", u"7", "1", "Not invertible."},
        {u"1", u"-7", "1", "Modulus can't be negative."},
    };
    for (const auto& row : rows) {
        BigInteger divisor = big(row.left);
        std::string failure = failureOf([&] { divisor.gcd(big(row.right)); });
        EXPECT_EQ(failure == "nothing" ? shown(divisor) : failure, row.divisor) << String(row.left);
        BigInteger inverse = big(row.left);
        failure = failureOf([&] { inverse.modInverse(big(row.right)); });
        EXPECT_EQ(failure == "nothing" ? shown(inverse) : failure, row.inverse) << String(row.left);
    }
}

TEST(BigInteger, RaisesToPowers)
{
    const auto power = [](const char16_t* base, const char16_t* exponent) {
        BigInteger value = big(base);
        const std::string failure = failureOf([&] { value.pow(big(exponent)); });
        return failure == "nothing" ? shown(value) : failure;
    };
    EXPECT_EQ(power(u"-7", u"1"), "-7");
    EXPECT_EQ(power(u"-7", u"0"), "-7") << "no round, no change";
    EXPECT_EQ(power(u"-12", u"7"), "-35831808");
    EXPECT_EQ(power(u"36893488147419103232", u"2"), "1361129467683753853853498429727072845824");
    EXPECT_EQ(power(u"-1", u"99999999999999999999999999999999"), "-1");
    EXPECT_EQ(power(u"0", u"99999999999999999999999999999998"), "0");
    EXPECT_EQ(power(u"2", u"99999999999999999999999999999999"), "too large");
    EXPECT_EQ(power(u"3", u"2147483648"), "too large");
    EXPECT_EQ(power(u"2", u"-1"), "Negative Exponent");

    const auto modulo = [](const char16_t* base, const char16_t* exponent, const char16_t* modulus) {
        BigInteger value = big(base);
        const std::string failure = failureOf([&] { value.modPow(big(exponent), big(modulus)); });
        return failure == "nothing" ? shown(value) : failure;
    };
    EXPECT_EQ(modulo(u"2", u"3", u"5"), "3");
    EXPECT_EQ(modulo(u"9", u"0", u"5"), "4") << "no round, then the residue";
    EXPECT_EQ(modulo(u"-2", u"2", u"5"), "4");
    EXPECT_EQ(modulo(u"-2", u"3", u"5"), "2");
    EXPECT_EQ(modulo(u"-10", u"3", u"5"), "5") << "a negative multiple";
    EXPECT_EQ(modulo(u"3", u"99999999999999999999", u"4"), "3");
    EXPECT_EQ(modulo(u"3", u"5", u"1"), "0");
    EXPECT_EQ(modulo(u"3", u"-2", u"7"), "25") << "the power of the inverse, not reduced";
    EXPECT_EQ(modulo(u"2", u"-1", u"4"), "Not invertible.");
    EXPECT_EQ(modulo(u"2", u"5", u"0"), "Divide by zero.");
    EXPECT_EQ(modulo(u"2", u"5", u"-7"), "Modulus can't be negative.");
}

TEST(BigInteger, LeavesTheNumberAsItWasWhenItFails)
{
    BigInteger value = big(u"-123456789012345678901234567890");
    const struct {
        const char* wanted;
        std::function<void()> work;
    } rows[] = {
        {"Divide by zero.", [&] { value.divide(BigInteger::ZERO, value); }},
        {"Divide by zero.", [&] { value.mod(minusZero()); }},
        {"Modulus can't be negative.", [&] { value.mod(BigInteger(-1)); }},
        {"Not invertible.", [&] { value.modInverse(BigInteger(10)); }},
        {"Not invertible.", [&] { value.modPow(BigInteger(-5), BigInteger(10)); }},
        {"too large", [&] { value.modPow(BigInteger(std::numeric_limits<long long>::min()), BigInteger(11)); }},
        {"too large", [&] { value.pow(BigInteger(std::numeric_limits<int>::max())); }},
        {"too large", [&] { value.setBit(std::numeric_limits<int>::max()); }},
        {"range: Bit number can't be negative.", [&] { value.setBit(-1); }},
        {"range: Bit number can't be negative.", [&] { value.clearBit(-1); }},
        {"cast failed", [&] { value.compareTo(static_cast<const Object&>(String(u"1"))); }},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(failureOf(row.work), row.wanted);
        EXPECT_EQ(shown(value), "-123456789012345678901234567890") << row.wanted;
    }
    // A divisor whose only bit was cleared has a byte, and still does not divide.
    BigInteger emptied(1);
    emptied.clearBit(0);
    EXPECT_FALSE(emptied.isZero());
    EXPECT_EQ(failureOf([&] { value.divide(emptied, value); }), "Divide by zero.");
    EXPECT_EQ(shown(emptied), "0");
}

TEST(BigInteger, ConvertsItsLow63Bits)
{
    const struct {
        const char16_t* text;
        std::int64_t wanted;
    } rows[] = {
        {u"9223372036854775807", 9223372036854775807},
        {u"-9223372036854775807", -9223372036854775807},
        {u"9223372036854775808", 0},
        {u"-18446744073709551615", -9223372036854775807},
        {u"-18446744073709551617", -1},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(big(row.text).toInt64(), row.wanted);
        EXPECT_EQ(big(row.text).toDouble(), static_cast<double>(row.wanted));
    }
}

} // namespace
} // namespace vx::math
