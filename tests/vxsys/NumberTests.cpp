#include "vxsys/Number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

namespace {

std::u16string widen(const std::string& text)
{
    return {text.begin(), text.end()};
}

bool isSameDouble(double left, double right)
{
    return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}

/// The C library, in the C locale, decides; what it reads beyond 32 bits is clipped here.
void expectAsStrtol(const std::string& text, int radix)
{
    char* end = nullptr;
    const long long wanted = std::strtoll(text.c_str(), &end, radix);
    const auto used = end - text.c_str();
    const std::u16string wide = widen(text);
    const char16_t* wideEnd = nullptr;

    constexpr long long LEAST = std::numeric_limits<std::int32_t>::min();
    constexpr long long LARGEST = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(VXStrToLW(wide.c_str(), &wideEnd, radix), std::clamp(wanted, LEAST, LARGEST)) << text << " in " << radix;
    EXPECT_EQ(wideEnd - wide.c_str(), used) << text << " in " << radix;

    constexpr long long LARGEST_UNSIGNED = std::numeric_limits<std::uint32_t>::max();
    const bool isBeyond = wanted > LARGEST_UNSIGNED || wanted < -LARGEST_UNSIGNED;
    EXPECT_EQ(VXStrToULW(wide.c_str(), &wideEnd, radix), isBeyond ? UINT32_MAX : static_cast<std::uint32_t>(wanted))
        << text << " in " << radix;
    EXPECT_EQ(wideEnd - wide.c_str(), used) << text << " in " << radix;
}

void expectAsStrtod(const std::string& text)
{
    char* end = nullptr;
    const double wanted = std::strtod(text.c_str(), &end);
    const std::u16string wide = widen(text);
    const char16_t* wideEnd = nullptr;
    const double value = VXStrToDW(wide.c_str(), &wideEnd);
    EXPECT_TRUE(isSameDouble(value, wanted)) << text << " gave " << value << ", wanted " << wanted;
    EXPECT_EQ(wideEnd - wide.c_str(), end - text.c_str()) << text;
}

TEST(Number, ReadsWholeNumbersAsTheCLibraryDoes)
{
    const char* const texts[]
        = {"", " ", "-", "+", "0", "7", " \t\n\v\f\r12x", "+12", "-12", "--1", "+-1", "- 1", "0x", "0X", "0xg", "0x1F",
            "-0x10", "0x-1", "x1", "017", "08", "09", "1z", "zZ", "2147483647", "2147483648", "-2147483648",
            "-2147483649", "4294967295", "4294967296", "-4294967295", "-4294967296", "99999999999999999999999999",
            "1,5", "-99999999999999999999999999z", "00000000000000000000000000000012", "1_000", "\xA0"};
    for (const char* text : texts) {
        for (const int radix : {0, 2, 8, 10, 16, 36})
            expectAsStrtol(text, radix);
    }
}

TEST(Number, ReadsNothingWhereThereIsNoNumberOrNoSuchRadix)
{
    const std::u16string text = u"12";
    for (const int radix : {-1, 1, 37}) {
        const char16_t* end = nullptr;
        EXPECT_EQ(VXStrToLW(text.c_str(), &end, radix), 0);
        EXPECT_EQ(end, text.c_str());
    }
    EXPECT_EQ(VXStrToIW(nullptr), 0);
    EXPECT_EQ(VXStrToDW(nullptr, nullptr), 0);
    EXPECT_EQ(VXStrToIW(u"\u0661"), 0) << "digits of other scripts are no digits";
    EXPECT_EQ(VXStrToIW(u"\u00A01"), 0) << "nor is every space one";
}

TEST(Number, ReadsFloatingPointAsTheCLibraryDoes)
{
    const char* const texts[] = {"", ".", "-", "+.", "e5", ".e5", "0", "-0", "-0.0e9", "1.", ".5", "1.5.2",
        " \n-1.5e3x", "1e", "1e+", "1e-x", "1e5", "1E+05", "1d5", "1,5", "1e400", "-1e400", "1e-400", "-1e-400",
        "0e999999999999999999", "1e99999999999999999999", "1e-99999999999999999999", "4.9e-324",
        "2.4703282292062327e-324", "2.4703282292062329e-324", "2.2250738585072011e-308", "1.7976931348623157e308",
        "1.7976931348623159e308", "9007199254740993", "9007199254740992.99999999999999999999", "inf", "-INF",
        "Infinity", "infinitx", "in", "nan", "-nan", "nan(", "nan(12_aZ)", "nan(1-2)", "NaNx", "0x", "0x.", "0x.8",
        "0x1p", "0x1p-", "0x1.8p1", "-0X1.Fp-2x", "0xp1", "0x1p1024", "0x1.fffffffffffff7p1023",
        "0x1.fffffffffffff8p1023", "0x1p-1074", "0x1p-1075", "0x1.0000000000001p-1075", "0x1.00000000000008p0",
        "0x1.000000000000080000000000001p0", "0x1.00000000000018p0",
        "0x0000000000000000000000000000.00000000000000000000000000000000001p140", "0x1p99999999999999999999", "0x1e5"};
    for (const char* text : texts)
        expectAsStrtod(text);
}

TEST(Number, ReadsFloatingPointOfAnyLength)
{
    const std::string halfway = "9007199254740993"; // between two doubles
    expectAsStrtod(halfway + "." + std::string(5000, '0'));
    expectAsStrtod(halfway + "." + std::string(5000, '0') + "1");
    expectAsStrtod(halfway + std::string(5000, '0') + "e-5000");
    expectAsStrtod(halfway + std::string(5000, '0') + "1e-5001");
    expectAsStrtod("0." + std::string(5000, '0') + halfway + "e5016");
    expectAsStrtod("0x" + std::string(3000, '0') + "1." + std::string(2999, '0') + "1p-3");
    expectAsStrtod(std::string(3000, '9'));
    // Halfway, told by the last digit only, where half rounds up
    expectAsStrtod("1.00000000000000033306690738754696212708950042724609375");
    char text[1100];
    std::snprintf(text, sizeof text, "%.1075Lf", std::ldexp(3.0L, -1075));
    expectAsStrtod(text);
    expectAsStrtod("." + std::string(3000, '0') + "1");
}

TEST(Number, ReadsRandomFloatingPointAsTheCLibraryDoes)
{
    constexpr std::uint64_t SEED = 20240229;
    SCOPED_TRACE(SEED);
    std::mt19937_64 random(SEED);
    for (int i = 0; i < 20000; ++i) {
        const auto value = std::bit_cast<double>(random());
        char text[64];
        for (const char* format : {"%.17g", "%.20e", "%.6g", "%a"}) {
            std::snprintf(text, sizeof text, format, value);
            expectAsStrtod(text);
        }
        // More digits than a double holds, around the smallest ones
        std::snprintf(text, sizeof text, "0x%llx.%llxp-%u", static_cast<unsigned long long>(random() >> random() % 64),
            static_cast<unsigned long long>(random()), static_cast<unsigned>(random() % 1200));
        expectAsStrtod(text);
    }
}

TEST(Number, WritesInEachRadix)
{
    struct {
        std::int32_t value;
        std::int32_t radix;
        const char* text;
    } cases[] = {
        {0, 10, "0"},
        {INT32_MIN, 10, "-2147483648"},
        {INT32_MIN, 2, "10000000000000000000000000000000"},
        {-1, 16, "ffffffff"},
        {-1, 36, "1z141z3"},
        {35, 36, "z"},
        {5, 1, ""},
        {5, 37, ""},
    };
    for (const auto& row : cases) {
        char narrow[34];
        char16_t wide[34];
        EXPECT_STREQ(VXLToStrA(row.value, narrow, row.radix), row.text);
        EXPECT_EQ(std::u16string(VXLToStrW(row.value, wide, row.radix)), widen(row.text));
    }
    EXPECT_EQ(VXLToStrA(1, nullptr, 10), nullptr);
    EXPECT_EQ(VXLToStrW(1, nullptr, 10), nullptr);
}

} // namespace
