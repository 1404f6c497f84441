#include "tests/vx/Common.h"
#include "vx/math/BigDecimal.h"
#include "vx/math/BigInteger.h"

#include <gmpxx.h>

#include <cstdlib>
#include <random>

namespace vx::math {
namespace {

unsigned long setting(const char* name, unsigned long usual)
{
    const char* text = std::getenv(name);
    return text != nullptr ? std::strtoul(text, nullptr, 10) : usual;
}

using Exact = mpz_class;

Exact exactOf(BigInteger value)
{
    Exact exact;
    mpz_import(exact.get_mpz_t(), static_cast<std::size_t>(value.getSize()), -1, 1, 0, 0, value.getData());
    return value.isNegative() ? Exact(-exact) : exact;
}

std::size_t bitsOf(const Exact& value)
{
    return value == 0 ? 0 : mpz_sizeinbase(value.get_mpz_t(), 2);
}

Exact powerOf(const Exact& base, unsigned long exponent)
{
    Exact power;
    mpz_pow_ui(power.get_mpz_t(), base.get_mpz_t(), exponent);
    return power;
}

/// Random operations in a fixed order. Sizes range from none to beyond the borders between algorithms. Long runs of
/// equal bits are as frequent as random bits.
class BigOracle : public testing::Test {
protected:
    BigOracle() { RecordProperty("seed", std::to_string(m_seed)); }

    unsigned long below(unsigned long limit) { return static_cast<unsigned long>(m_random() % limit); }

    BigInteger number(std::size_t mostBytes) { return numberOf(below(mostBytes + 1) >> below(8)); }
    BigInteger numberOf(std::size_t size)
    {
        std::string bytes;
        while (bytes.size() < size) {
            const char run[] = {'\0', '\xFF', static_cast<char>(m_random())};
            bytes.append(1 + below(24), run[below(3)]);
            for (std::size_t noise = below(24); noise > 0; --noise)
                bytes += static_cast<char>(m_random());
        }
        const bool negative = below(2) != 0 && bytes.find_first_not_of('\0') < size; // GMP has no zero with the flag
        return {reinterpret_cast<const signed char*>(bytes.data()), static_cast<int>(size), negative};
    }
    /// Mostly small, sometimes up to 20,000 digits, and rarely up to 200,000.
    BigInteger number()
    {
        return number(below(400) == 0 ? 83'000 : below(40) == 0 ? 8200 : below(8) == 0 ? 1500 : 200);
    }
    BigInteger positive(std::size_t mostBytes)
    {
        BigInteger value = number(mostBytes);
        value.abs();
        value.setBit(static_cast<int>(below(8 * mostBytes)));
        return value;
    }

    /// 2^n - 1: every digit is full, and every carry runs through.
    static BigInteger onesOf(std::size_t size)
    {
        const std::vector<signed char> bytes(size, -1);
        return {bytes.data(), static_cast<int>(size), false};
    }

    const unsigned long m_seed = setting("VX_ORACLE_SEED", 20240229);
    const unsigned long m_operations = setting("VX_ORACLE_OPERATIONS", 5000);
    std::mt19937_64 m_random {m_seed};
};

/// Documented differences from arithmetic: a remainder has no sign, and the residue of a negative number is never 0.
Exact residue(const Exact& value, const Exact& modulus)
{
    const Exact rest = abs(value) % modulus;
    return value < 0 ? Exact(modulus - rest) : rest;
}

TEST_F(BigOracle, AgreesOnIntegers)
{
    for (unsigned long round = 0; round < m_operations && !HasFailure(); ++round) {
        BigInteger left = number(), right = number();
        const Exact x = exactOf(left), y = exactOf(right);
        Exact wanted;
        const auto divide = [&] {
            const Exact dividend = exactOf(left);
            wanted = dividend;
            if (y == 0)
                return;
            BigInteger rest;
            left.divide(right, rest);
            wanted = dividend / y;
            EXPECT_EQ(exactOf(rest), Exact(abs(dividend) % abs(y)));
        };
        const std::pair<const char*, std::function<void()>> operations[] = {
            {"add", [&] { left.add(right), wanted = x + y; }},
            {"subtract", [&] { left.subtract(right), wanted = x - y; }},
            {"multiply", [&] { left.multiply(right), wanted = x * y; }},
            {"square", [&] { left.multiply(left), wanted = x * x; }},
            {"divide", divide},
            {"divide what is close to a multiple",
                [&] {
                    left.multiply(right);
                    left.add(BigInteger(static_cast<int>(below(3)) - 1));
                    divide();
                }},
            {"mod",
                [&] {
                    right = positive(600);
                    left.mod(right);
                    wanted = residue(x, exactOf(right));
                }},
            {"gcd",
                [&] {
                    const BigInteger common = positive(100);
                    left.multiply(common);
                    right.multiply(common);
                    wanted = exactOf(left);
                    if (y == 0)
                        return;
                    const Exact other = exactOf(right);
                    wanted = gcd(wanted, other);
                    if (wanted == abs(other))
                        wanted = other; // with its sign, where it divides the number
                    left.gcd(right);
                }},
            {"inverse", // stated for positive numbers
                [&] {
                    left = positive(100);
                    right = positive(100);
                    const Exact number = exactOf(left), modulus = exactOf(right);
                    const bool exists = mpz_invert(wanted.get_mpz_t(), number.get_mpz_t(), modulus.get_mpz_t()) != 0;
                    if (!exists || modulus == 1)
                        wanted = exists ? Exact(0) : number;
                    bool isFound = true;
                    try {
                        left.modInverse(right);
                    } catch (const Exception&) {
                        isFound = false;
                    }
                    EXPECT_EQ(isFound, exists);
                }},
            {"pow",
                [&] {
                    const unsigned long exponent = 1 + below(left.getSize() > 100 ? 5 : 100);
                    left.pow(BigInteger(exponent));
                    wanted = powerOf(x, exponent);
                }},
            {"modPow",
                [&] {
                    left = number(300);
                    const BigInteger power = positive(60);
                    right = positive(200);
                    const Exact base = exactOf(left), exponent = exactOf(power), modulus = exactOf(right);
                    left.modPow(power, right);
                    mpz_powm(
                        wanted.get_mpz_t(), Exact(abs(base)).get_mpz_t(), exponent.get_mpz_t(), modulus.get_mpz_t());
                    if (base < 0 && mpz_odd_p(exponent.get_mpz_t()))
                        wanted = modulus - wanted;
                }},
            {"text",
                [&] {
                    const int radix = 2 + static_cast<int>(below(35));
                    const String text = left.toString(radix);
                    EXPECT_EQ(text.toUtf8(), x.get_str(radix)) << radix;
                    left = BigInteger(text, radix);
                    wanted = x;
                }},
            {"compare",
                [&] {
                    EXPECT_EQ(left.compareTo(right), sgn(Exact(x - y)));
                    EXPECT_EQ(left.compareTo(BigInteger(left)), 0);
                    wanted = x;
                }},
            {"bits",
                [&] {
                    const int bit = static_cast<int>(below(2000));
                    Exact with = abs(x);
                    mpz_setbit(with.get_mpz_t(), static_cast<mp_bitcnt_t>(bit));
                    left.setBit(bit);
                    EXPECT_EQ(Exact(abs(exactOf(left))), with);
                    left.clearBit(bit);
                    left.add(BigInteger::ZERO);
                    wanted = with;
                    mpz_clrbit(wanted.get_mpz_t(), static_cast<mp_bitcnt_t>(bit));
                    if (left.isNegative())
                        wanted = -wanted;
                }},
        };
        const auto& [name, operation] = operations[below(std::size(operations))];
        operation();
        EXPECT_EQ(exactOf(left), wanted);
        EXPECT_EQ(static_cast<std::size_t>(left.getBitCount()), bitsOf(wanted));
        EXPECT_EQ(static_cast<std::size_t>(left.getSize()), (bitsOf(wanted) + 7) / 8);
        EXPECT_EQ(exactOf(right) == 0, right.isZero());
        if (HasFailure())
            ADD_FAILURE() << "seed " << m_seed << ", round " << round << ", " << name << ", " << x.get_str(16)
                          << " and " << y.get_str(16);
    }
}

/// Words at which an algorithm begins, or a vector or block of digits is full, with and without vector instructions.
TEST_F(BigOracle, AgreesOnProductsOfSizesWhereTheAlgorithmChanges)
{
    constexpr std::size_t WORD = 8;
    for (const std::size_t border : {11, 26, 32, 48, 50, 140, 220, 360, 400, 480, 850, 4700}) {
        for (std::size_t words = border - 1; words <= border + 1; ++words) {
            const BigInteger ones = onesOf(WORD * words);
            // By 2^n - 1, this one's middle column carries out of two words.
            BigInteger halves = numberOf(WORD * (words - 2));
            halves.setBit(static_cast<int>(WORD * 8 * words) - 1);
            halves.setBit(static_cast<int>(WORD * 8 * (words - 1)) - 1);
            for (const BigInteger& left : {numberOf(WORD * words), ones, halves}) {
                for (const std::size_t other : {words, words - 1, words / 2 + 1, words / 3, std::size_t {12}}) {
                    for (const BigInteger& right : {numberOf(WORD * other), ones}) {
                        BigInteger product = left;
                        product.multiply(right);
                        const Exact wanted = exactOf(left) * exactOf(right);
                        EXPECT_EQ(exactOf(product), wanted) << "seed " << m_seed << ", " << words << " by " << other;
                    }
                }
                BigInteger square = left;
                square.multiply(square);
                EXPECT_EQ(exactOf(square), Exact(exactOf(left) * exactOf(left))) << "seed " << m_seed << ", " << words;
            }
        }
    }
}

TEST_F(BigOracle, AgreesOnPowersModuloNumbersThatFillVectors)
{
    for (const std::size_t words : {1, 2, 3, 4, 6, 7, 12, 13, 16, 19, 20, 32, 63, 64, 65}) {
        const std::size_t bytes = 8 * words;
        BigInteger even = onesOf(bytes), smallest, random = numberOf(bytes);
        even.clearBit(0);
        for (BigInteger* number : {&smallest, &random}) {
            number->setBit(static_cast<int>(8 * bytes) - 1);
            number->setBit(0);
        }
        random.abs();
        for (const BigInteger& modulus : {onesOf(bytes), even, smallest, random}) {
            BigInteger power = modulus; // the largest residue
            power.subtract(BigInteger::ONE);
            for (BigInteger base : {power, positive(2 * bytes), onesOf(bytes)}) {
                const BigInteger exponent = positive(30);
                const Exact x = exactOf(base), times = exactOf(exponent), divisor = exactOf(modulus);
                Exact wanted;
                mpz_powm(wanted.get_mpz_t(), x.get_mpz_t(), times.get_mpz_t(), divisor.get_mpz_t());
                base.modPow(exponent, modulus);
                EXPECT_EQ(exactOf(base), wanted) << "seed " << m_seed << ", " << words << " words";
            }
        }
        BigInteger root = positive(bytes / 2 - 1); // odd, and 0 only as a power
        root.setBit(0);
        BigInteger square = root, exponent = positive(30);
        square.multiply(root);
        exponent.setBit(1);
        root.modPow(exponent, square);
        EXPECT_TRUE(root.isZero()) << "seed " << m_seed << ", " << words << " words";
    }
}

/// A decimal number as an exact integer and a scale.
struct ExactDecimal {
    Exact unscaled;
    int scale;

    static Exact powerOfTen(int exponent) { return powerOf(10, static_cast<unsigned long>(exponent)); }
    void scaleTo(int wanted)
    {
        wanted > scale ? unscaled *= powerOfTen(wanted - scale) : unscaled /= powerOfTen(scale - wanted);
        scale = wanted;
    }
    std::string text() const
    {
        std::string digits = Exact(abs(unscaled)).get_str();
        if (static_cast<std::size_t>(scale) >= digits.size())
            digits.insert(0, static_cast<std::size_t>(scale) + 1 - digits.size(), '0');
        if (scale > 0)
            digits.insert(digits.size() - static_cast<std::size_t>(scale), 1, '.');
        return (unscaled < 0 ? "-" : "") + digits;
    }
};

TEST_F(BigOracle, AgreesOnDecimals)
{
    for (unsigned long round = 0; round < m_operations && !HasFailure(); ++round) {
        const auto decimal = [&] { return BigDecimal(number(below(20) == 0 ? 600 : 30), static_cast<int>(below(60))); };
        BigDecimal left = decimal();
        const BigDecimal right = decimal();
        const auto exact = [](const BigDecimal& value) {
            const Exact unscaled = exactOf(value.abs());
            return ExactDecimal {value.isNegative() ? Exact(-unscaled) : unscaled, value.getScale()};
        };
        ExactDecimal wanted = exact(left), other = exact(right);
        const std::string operands = wanted.text() + " and " + other.text();
        const unsigned long operation = below(6);
        const int common = std::max(wanted.scale, other.scale);
        switch (operation) {
        case 0:
        case 1:
            operation == 0 ? left.add(right) : left.subtract(right);
            wanted.scaleTo(common);
            other.scaleTo(common);
            operation == 0 ? wanted.unscaled += other.unscaled : wanted.unscaled -= other.unscaled;
            break;
        case 2:
            left.multiply(right);
            wanted.unscaled *= other.unscaled;
            wanted.scale += other.scale;
            break;
        case 3: { // half away from zero: the floor of the doubled quotient, plus 1, halved
            if (other.unscaled == 0)
                continue;
            const int scale = static_cast<int>(below(80));
            left.divide(right, scale);
            const int sign = sgn(wanted.unscaled) * sgn(other.unscaled);
            const Exact upper = abs(wanted.unscaled) * ExactDecimal::powerOfTen(scale + other.scale);
            const Exact lower = abs(other.unscaled) * ExactDecimal::powerOfTen(wanted.scale);
            wanted = {sign * ((2 * upper / lower + 1) / 2), scale};
            break;
        }
        case 4: {
            const int scale = static_cast<int>(below(80));
            left.setScale(scale);
            wanted.scaleTo(scale);
            break;
        }
        default:
            wanted.scaleTo(common);
            other.scaleTo(common);
            EXPECT_EQ(left.compareTo(right), sgn(Exact(wanted.unscaled - other.unscaled)));
            left.setScale(common);
            EXPECT_EQ(left.toDouble(), std::strtod(wanted.text().c_str(), nullptr));
        }
        // A zero may carry the sign into its text.
        const std::string text = left.toString().toUtf8();
        EXPECT_EQ(wanted.unscaled == 0 && left.isNegative() ? text.substr(1) : text, wanted.text())
            << "seed " << m_seed << ", round " << round << ", operation " << operation << ", " << operands;
    }
}

} // namespace
} // namespace vx::math
