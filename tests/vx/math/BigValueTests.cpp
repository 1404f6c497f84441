#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "vx/Values.h"
#include "vx/math/Operators.h"
#include "vx/util/Guid.h"

#include <cstdio>
#include <iterator>
#include <sstream>
#include <unordered_set>

namespace vx::math {
namespace {

/// Reads lines "number divisor scale mode quotient rounded", computes the last two itself, and fails at the first difference.
constexpr char ROUNDING_CHECK[] = R"(python3 -c '
import decimal, sys
decimal.getcontext().prec = 500
MODES = ("UP", "DOWN", "CEILING", "FLOOR", "HALF_UP", "HALF_DOWN", "HALF_EVEN")
lines = sys.stdin.read().splitlines()
assert len(lines) == int(sys.argv[1])
for line in lines:
    number, divisor, scale, mode, quotient, rounded = line.split()
    unit = decimal.Decimal(1).scaleb(-int(scale))
    rounding = "ROUND_" + MODES[int(mode)]
    for ours, exact in ((quotient, decimal.Decimal(number) / decimal.Decimal(divisor)), (rounded, decimal.Decimal(number))):
        expected = exact.quantize(unit, rounding=rounding)
        assert decimal.Decimal(ours) == expected and len(ours.partition(".")[2]) == max(0, int(scale)), (line, expected)
' )";

TEST(BigDecimal, RoundsAsAnotherLibraryDoes)
{
    constexpr int CASES = 100'000;
    constexpr RoundingMode MODES[] = {RoundingMode::UP, RoundingMode::DOWN, RoundingMode::CEILING, RoundingMode::FLOOR,
        RoundingMode::HALF_UP, RoundingMode::HALF_DOWN, RoundingMode::HALF_EVEN};
    Random random;
    const auto number = [&random] {
        std::string text(random.below(2) == 0 ? "-" : "");
        for (int left = random.below(random.below(20) == 0 ? 60 : 6); left >= 0; --left)
            text += static_cast<char>('0' + (random.below(3) == 0 ? 5 * random.below(2) : random.below(10)));
        if (const int fraction = random.below(6); fraction > 0) {
            text += '.';
            for (int left = fraction; left > 0; --left) // often near to a half
                text += static_cast<char>('0' + (random.below(2) == 0 ? 5 * random.below(2) : random.below(10)));
        }
        return text;
    };
    std::FILE* const check = ::popen((ROUNDING_CHECK + std::to_string(CASES)).c_str(), "w");
    ASSERT_NE(check, nullptr);
    for (int count = 0; count < CASES; ++count) {
        const std::string text = number();
        std::string divisorText = number();
        BigDecimal divisor {String(divisorText)};
        if (divisor == BigDecimal())
            divisor = BigDecimal(String(divisorText = "0.5"));
        const int scale = random.below(random.below(50) == 0 ? 60 : 8) - 3;
        const int mode = random.below(static_cast<int>(std::size(MODES)));
        BigDecimal quotient {String(text)};
        BigDecimal rounded(quotient);
        quotient.divide(divisor, scale, MODES[mode]);
        rounded.setScale(scale, MODES[mode]);
        std::fprintf(check, "%s %s %d %d %s %s\n", text.c_str(), divisorText.c_str(), scale, mode,
            quotient.toString().toUtf8().c_str(), rounded.toString().toUtf8().c_str());
    }
    EXPECT_EQ(::pclose(check), 0);
    BigDecimal last(5);
    EXPECT_THROW(last.divide(BigDecimal(), 1, RoundingMode::UP), Exception);
    EXPECT_EQ(last.toString(), u"5") << "a failure changes nothing";
    last.setScale(-2'000'000'000, RoundingMode::DOWN);
    EXPECT_EQ(last, BigDecimal());
}
/// Nothing for what was not parsed.
std::string textOf(const auto& value)
{
    return value ? value->toString().toUtf8() : "";
}

TEST(BigValues, AreParsedWholeOrNotAtAll)
{
    const std::tuple<const char16_t*, const char*, const char*> cases[] = {{u"-00120", "-120", "-120"},
        {u"123456789012345678901234567890", "123456789012345678901234567890", "123456789012345678901234567890"},
        {u"-1.50", "", "-1.5"}, {u"0.0", "", "0.0"}};
    for (const auto& [text, integer, decimal] : cases) {
        EXPECT_EQ(textOf(BigInteger::tryParse(text)), integer);
        EXPECT_EQ(textOf(BigDecimal::tryParse(text)), decimal);
    }
    for (const char16_t* text :
        {u"", u"-", u"--1", u"+1", u" 1", u"1 ", u"1,5", u"1e5", u"1.", u".5", u"1.2.3", u"0x10", u"\u0661"})
        EXPECT_EQ(textOf(BigInteger::tryParse(text)) + textOf(BigDecimal::tryParse(text)), "") << String(text);
    EXPECT_EQ(BigInteger::tryParse(u"-Zz", 36), -BigInteger(35 * 36 + 35));
    EXPECT_EQ(BigInteger::tryParse(u"12", 2), std::nullopt);
    EXPECT_THROW(BigInteger::tryParse(u"1", 1), RangeErrorException);
}

TEST(BigValues, BehaveAsNumbersDo)
{
    Random random;
    for (int round = 0; round < 5'000; ++round) {
        const int a = random.below(2'001) - 1'000;
        const int b = random.below(21) - 10;
        const BigInteger left(a), right(b);
        const BigDecimal decimal(left, 2), other(right, 1);
        EXPECT_EQ(left + right, BigInteger(a + b));
        EXPECT_EQ(left - right, BigInteger(a - b));
        EXPECT_EQ(left * right, BigInteger(a * b));
        EXPECT_EQ(-left, BigInteger(-a));
        if (b != 0) {
            EXPECT_EQ(left / right, BigInteger(a / b)) << a << ' ' << b;
            EXPECT_EQ(left % right, BigInteger(a % b)) << a << ' ' << b;
        }
        EXPECT_EQ(left <=> right, a <=> b) << a << ' ' << b;
        EXPECT_EQ(left == right, a == b);
        EXPECT_EQ(decimal + other, BigDecimal(BigInteger(a + 10 * b), 2));
        EXPECT_EQ(decimal - other, BigDecimal(BigInteger(a - 10 * b), 2));
        EXPECT_EQ(decimal * other, BigDecimal(BigInteger(a * b), 3));
        EXPECT_EQ(decimal <=> other, a <=> 10 * b);
    }
    EXPECT_THROW(BigInteger(1) / BigInteger(), Exception);
    EXPECT_EQ(-BigInteger(), BigInteger()) << "a zero with a sign";

    std::unordered_set<BigDecimal> set {1.50_dec, 1.5_dec, 2_dec};
    EXPECT_EQ(set.size(), 2U);
    std::unordered_set<BigInteger> integers {-BigInteger(), 0_big, 123456789012345678901234567890_big};
    EXPECT_EQ(integers.size(), 2U);
    EXPECT_EQ((u"a\0b"_vs).getLength(), 3);
    EXPECT_THROW(static_cast<void>(0x10_big), Exception);

    std::ostringstream out;
    out << 12345678901234567890_big << ' ' << 0.05_dec << ' ' << util::Guid();
    EXPECT_EQ(out.str(), "12345678901234567890 0.05 {00000000-0000-0000-0000-000000000000}");
}

} // namespace
} // namespace vx::math
