#include "vx/Exception.h"
#include "vx/String.h"
#include "vx/math/BigDecimal.h"
#include "vx/math/BigInteger.h"

#include <gmp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <utility>

namespace vx::math {
namespace {

unsigned long setting(const char* name, unsigned long usual)
{
    const char* text = std::getenv(name);
    return text != nullptr ? std::strtoul(text, nullptr, 10) : usual;
}

/// A number of GMP with the operators that these tests need.
class Exact {
public:
    Exact(long value = 0) { mpz_init_set_si(m_value, value); }
    Exact(const Exact& other) { mpz_init_set(m_value, other.m_value); }
    explicit Exact(BigInteger value)
    {
        mpz_init(m_value);
        mpz_import(m_value, static_cast<std::size_t>(value.getSize()), -1, 1, 0, 0, value.getData());
        if (value.isNegative())
            mpz_neg(m_value, m_value);
    }
    ~Exact() { mpz_clear(m_value); }
    Exact& operator=(const Exact& other)
    {
        mpz_set(m_value, other.m_value);
        return *this;
    }

    mpz_ptr get() { return m_value; }
    int sign() const { return mpz_sgn(m_value); }
    std::size_t bits() const { return sign() == 0 ? 0 : mpz_sizeinbase(m_value, 2); }
    Exact magnitude() const { return call(mpz_abs); }
    Exact power(unsigned long exponent) const
    {
        Exact result;
        mpz_pow_ui(result.m_value, m_value, exponent);
        return result;
    }
    Exact powerModulo(const Exact& exponent, const Exact& modulus) const
    {
        Exact result;
        mpz_powm(result.m_value, m_value, exponent.m_value, modulus.m_value);
        return result;
    }
    /// False where there is none, which leaves the number undefined.
    bool invert(const Exact& modulus) { return mpz_invert(m_value, m_value, modulus.m_value) != 0; }
    Exact divisorWith(const Exact& other) const { return call(mpz_gcd, other); }
    std::string text(int radix) const
    {
        std::string digits(mpz_sizeinbase(m_value, radix) + 2, 0);
        mpz_get_str(digits.data(), radix, m_value);
        digits.resize(digits.find('\0'));
        return digits;
    }

    Exact operator-() const { return call(mpz_neg); }
    friend Exact operator+(const Exact& left, const Exact& right) { return left.call(mpz_add, right); }
    friend Exact operator-(const Exact& left, const Exact& right) { return left.call(mpz_sub, right); }
    friend Exact operator*(const Exact& left, const Exact& right) { return left.call(mpz_mul, right); }
    friend Exact operator/(const Exact& left, const Exact& right) { return left.call(mpz_tdiv_q, right); }
    friend Exact operator%(const Exact& left, const Exact& right) { return left.call(mpz_tdiv_r, right); }
    friend bool operator==(const Exact& left, const Exact& right) { return mpz_cmp(left.m_value, right.m_value) == 0; }
    friend bool operator<(const Exact& left, const Exact& right) { return mpz_cmp(left.m_value, right.m_value) < 0; }

private:
    template <class Operation, class... Others>
    Exact call(Operation operation, const Others&... others) const
    {
        Exact result;
        operation(result.m_value, m_value, others.m_value...);
        return result;
    }

    mpz_t m_value;
};

/// Random operations of a fixed order. Sizes spread from nothing over the borders between algorithms; long runs of equal
/// bits are as frequent as noise.
class BigOracle : public testing::Test {
protected:
    BigOracle() { RecordProperty("seed", std::to_string(m_seed)); }

    unsigned long below(unsigned long limit) { return static_cast<unsigned long>(m_random() % limit); }

    BigInteger number(std::size_t mostBytes)
    {
        std::size_t size = below(mostBytes + 1) >> below(8);
        std::string bytes;
        while (bytes.size() < size) {
            const char run[] = {'\0', '\xFF', static_cast<char>(m_random())};
            bytes.append(1 + below(24), run[below(3)]);
            for (std::size_t noise = below(24); noise > 0; --noise)
                bytes += static_cast<char>(m_random());
        }
        const bool negative
            = below(2) != 0 && bytes.find_first_not_of('\0') < size; // a zero with the flag has no oracle
        return {reinterpret_cast<const signed char*>(bytes.data()), static_cast<int>(size), negative};
    }
    /// Mostly small, now and then up to 20,000 digits.
    BigInteger number() { return number(below(40) == 0 ? 8200 : below(8) == 0 ? 1500 : 200); }
    BigInteger positive(std::size_t mostBytes)
    {
        BigInteger value = number(mostBytes);
        value.abs();
        value.setBit(static_cast<int>(below(8 * mostBytes)));
        return value;
    }

    const unsigned long m_seed = setting("VX_ORACLE_SEED", 20240229);
    const unsigned long m_operations = setting("VX_ORACLE_OPERATIONS", 5000);
    std::mt19937_64 m_random {m_seed};
};

/// Stated exceptions from arithmetic: a remainder has no sign, and the residue of a negative number is never 0.
Exact residue(const Exact& value, const Exact& modulus)
{
    const Exact rest = value.magnitude() % modulus;
    return value.sign() < 0 ? modulus - rest : rest;
}

TEST_F(BigOracle, AgreesOnIntegers)
{
    for (unsigned long round = 0; round < m_operations && !HasFailure(); ++round) {
        BigInteger left = number(), right = number();
        const Exact x(left), y(right);
        Exact wanted;
        const auto divide = [&] {
            const Exact dividend(left);
            wanted = dividend;
            if (y.sign() == 0)
                return;
            BigInteger rest;
            left.divide(right, rest);
            wanted = dividend / y;
            EXPECT_EQ(Exact(rest), dividend.magnitude() % y.magnitude());
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
                    wanted = residue(x, Exact(right));
                }},
            {"gcd",
                [&] {
                    const BigInteger common = positive(100);
                    left.multiply(common);
                    right.multiply(common);
                    wanted = Exact(left);
                    if (y.sign() == 0)
                        return;
                    const Exact other(right);
                    wanted = wanted.divisorWith(other);
                    if (wanted == other.magnitude())
                        wanted = other; // with its sign, where it divides the number
                    left.gcd(right);
                }},
            {"inverse", // stated for positive numbers
                [&] {
                    left = positive(100);
                    right = positive(100);
                    wanted = Exact(left);
                    const bool exists = wanted.invert(Exact(right));
                    if (!exists || Exact(right) == Exact(1))
                        wanted = exists ? Exact(0) : Exact(left);
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
                    wanted = x.power(exponent);
                }},
            {"modPow",
                [&] {
                    left = number(300);
                    const Exact base(left);
                    const BigInteger exponent = positive(60);
                    right = positive(200);
                    left.modPow(exponent, right);
                    wanted = base.magnitude().powerModulo(Exact(exponent), Exact(right));
                    if (base.sign() < 0 && mpz_odd_p(Exact(exponent).get()))
                        wanted = Exact(right) - wanted;
                }},
            {"text",
                [&] {
                    const int radix = 2 + static_cast<int>(below(35));
                    const String text = left.toString(radix);
                    EXPECT_EQ(text.toUtf8(), x.text(radix)) << radix;
                    left = BigInteger(text, radix);
                    wanted = x;
                }},
            {"compare",
                [&] {
                    EXPECT_EQ(left.compareTo(right), x < y ? -1 : y < x ? 1 : 0);
                    EXPECT_EQ(left.compareTo(BigInteger(left)), 0);
                    wanted = x;
                }},
            {"bits",
                [&] {
                    const int bit = static_cast<int>(below(2000));
                    const Exact power = Exact(2).power(static_cast<unsigned long>(bit));
                    const bool isSet = !((x.magnitude() / power % Exact(2)) == Exact(0));
                    left.setBit(bit);
                    const Exact with = isSet ? x.magnitude() : x.magnitude() + power;
                    EXPECT_EQ(Exact(left).magnitude(), with);
                    left.clearBit(bit);
                    left.add(BigInteger::ZERO);
                    wanted = left.isNegative() ? -(with - power) : with - power;
                }},
        };
        const auto& [name, operation] = operations[below(std::size(operations))];
        operation();
        EXPECT_EQ(Exact(left), wanted);
        EXPECT_EQ(static_cast<std::size_t>(left.getBitCount()), wanted.bits());
        EXPECT_EQ(static_cast<std::size_t>(left.getSize()), (wanted.bits() + 7) / 8);
        EXPECT_EQ(Exact(right).sign() == 0, right.isZero());
        if (HasFailure())
            ADD_FAILURE() << "seed " << m_seed << ", round " << round << ", " << name << ", " << x.text(16) << " and "
                          << y.text(16);
    }
}

/// A decimal number as an exact integer and a scale.
struct ExactDecimal {
    Exact unscaled;
    int scale;

    static Exact powerOfTen(int exponent) { return Exact(10).power(static_cast<unsigned long>(exponent)); }
    void scaleTo(int wanted)
    {
        unscaled = wanted > scale ? unscaled * powerOfTen(wanted - scale) : unscaled / powerOfTen(scale - wanted);
        scale = wanted;
    }
    std::string text() const
    {
        std::string digits = unscaled.magnitude().text(10);
        if (static_cast<std::size_t>(scale) >= digits.size())
            digits.insert(0, static_cast<std::size_t>(scale) + 1 - digits.size(), '0');
        if (scale > 0)
            digits.insert(digits.size() - static_cast<std::size_t>(scale), 1, '.');
        return (unscaled.sign() < 0 ? "-" : "") + digits;
    }
};

TEST_F(BigOracle, AgreesOnDecimals)
{
    for (unsigned long round = 0; round < m_operations && !HasFailure(); ++round) {
        const auto decimal = [&] { return BigDecimal(number(below(20) == 0 ? 600 : 30), static_cast<int>(below(60))); };
        BigDecimal left = decimal();
        const BigDecimal right = decimal();
        const auto exact = [](const BigDecimal& value) {
            Exact unscaled(value.abs());
            return ExactDecimal {value.isNegative() ? -unscaled : unscaled, value.getScale()};
        };
        ExactDecimal wanted = exact(left);
        ExactDecimal other = exact(right);
        const std::string operands = wanted.text() + " and " + other.text();
        const unsigned long operation = below(6);
        const int common = std::max(wanted.scale, other.scale);
        switch (operation) {
        case 0:
        case 1:
            operation == 0 ? left.add(right) : left.subtract(right);
            wanted.scaleTo(common);
            other.scaleTo(common);
            wanted.unscaled = operation == 0 ? wanted.unscaled + other.unscaled : wanted.unscaled - other.unscaled;
            break;
        case 2:
            left.multiply(right);
            wanted.unscaled = wanted.unscaled * other.unscaled;
            wanted.scale += other.scale;
            break;
        case 3: { // half away from zero: the floor of the doubled quotient, plus 1, halved
            if (other.unscaled.sign() == 0)
                continue;
            const int scale = static_cast<int>(below(80));
            left.divide(right, scale);
            const bool negative = wanted.unscaled.sign() * other.unscaled.sign() < 0;
            const Exact upper = wanted.unscaled.magnitude() * ExactDecimal::powerOfTen(scale + other.scale);
            const Exact lower = other.unscaled.magnitude() * ExactDecimal::powerOfTen(wanted.scale);
            const Exact quotient = (Exact(2) * upper / lower + Exact(1)) / Exact(2);
            wanted = {negative ? -quotient : quotient, scale};
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
            EXPECT_EQ(left.compareTo(right),
                wanted.unscaled < other.unscaled       ? -1
                    : other.unscaled < wanted.unscaled ? 1
                                                       : 0);
            left.setScale(common);
            EXPECT_EQ(left.toDouble(), std::strtod(wanted.text().c_str(), nullptr));
        }
        // A zero may carry the sign into its text.
        const std::string text = left.toString().toUtf8();
        EXPECT_EQ(wanted.unscaled.sign() == 0 && left.isNegative() ? text.substr(1) : text, wanted.text())
            << "seed " << m_seed << ", round " << round << ", operation " << operation << ", " << operands;
    }
}

} // namespace
} // namespace vx::math
