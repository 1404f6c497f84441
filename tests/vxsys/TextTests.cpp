#include "vxsys/Text.h"

#include "vxsys/Number.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cwctype>
#include <limits>
#include <locale.h>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <utility>

namespace {

using namespace std::literals;

/// A text at the very end of its block, so that the sanitizer notices each access after it. `offset` moves its start.
class TightText {
public:
    explicit TightText(std::u16string_view text, std::size_t offset = 0)
        : m_offset(offset)
        , m_units(new char16_t[offset + text.size() + 1])
    {
        std::fill_n(m_units.get(), offset, u'#');
        std::copy(text.begin(), text.end(), get());
        get()[text.size()] = 0;
    }

    char16_t* get() { return m_units.get() + m_offset; }

private:
    std::size_t m_offset;
    std::unique_ptr<char16_t[]> m_units;
};

TEST(Text, FindsEveryUnitAtEveryAlignment)
{
    for (std::size_t offset = 0; offset < 8; ++offset) {
        for (std::size_t length = 0; length < 40; ++length) {
            TightText text(std::u16string(length, u'a'), offset);
            ASSERT_EQ(VXStrLenW(text.get()), static_cast<std::int32_t>(length)) << offset;
            ASSERT_EQ(VXStrChrW(text.get(), u'\0'), text.get() + length) << offset;
            ASSERT_EQ(VXStrChrW(text.get(), u'#'), nullptr) << "what lies in front is not the text";
            for (std::size_t i = 0; i < length; ++i) {
                text.get()[i] = u'\u6100'; // the same byte as 'a', in the other half
                ASSERT_EQ(VXStrChrW(text.get(), u'\u6100'), text.get() + i) << offset << ' ' << length;
                text.get()[i] = u'a';
            }
        }
    }
}

TEST(Text, ComparesACountOfUnitsWithoutRegardToCase)
{
    const std::u16string plain = u"abc\0[_`{@Zz \u00E4\u0436k\u0131s\uFFFFabcdefghijklmnopqrstuvwxyz0123"
                                 u"\u01C6\u10D0\U00010428"s;
    for (std::size_t length = 0; length <= plain.size(); ++length) {
        std::u16string other = plain.substr(0, length);
        std::transform(other.begin(), other.end(), other.begin(), [](char16_t unit) {
            const char16_t upper = VXToUpperW(unit);
            return VXToLowerW(upper) == unit ? upper : unit;
        });
        const auto count = static_cast<std::int32_t>(length);
        ASSERT_EQ(VXMemNICmpW(TightText(plain.substr(0, length)).get(), TightText(other).get(), count), 0) << length;
        for (std::size_t i = 0; i < length; ++i) {
            for (const char16_t unit : {u'\0', u'^', u'\u00C9', u'\uFFFE'}) {
                const char16_t kept = std::exchange(other[i], unit);
                const int wanted = std::clamp(VXToLowerW(plain[i]) - VXToLowerW(unit), -1, 1);
                ASSERT_EQ(VXMemNICmpW(plain.data(), other.data(), count), wanted) << length << ' ' << i;
                other[i] = kept;
            }
        }
    }
    EXPECT_EQ(VXMemNICmpW(u"a", u"b", -1), 0);
}

TEST(Text, FoldsTheBasicPlaneAsTheSystemDoes)
{
    // These got a case in Unicode 16, which the system may know
    constexpr std::uint32_t LATER[] = {0x19B, 0x264, 0x1C89, 0x1C8A, 0xA7CB, 0xA7CC, 0xA7CD, 0xA7DA, 0xA7DB, 0xA7DC};
    const locale_t system = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    ASSERT_NE(system, nullptr);
    for (std::uint32_t unit = 0; unit < 0x10000; ++unit) {
        if (std::find(std::begin(LATER), std::end(LATER), unit) != std::end(LATER))
            continue;
        const auto lower = static_cast<std::uint32_t>(::towlower_l(static_cast<wint_t>(unit), system));
        const auto upper = static_cast<std::uint32_t>(::towupper_l(static_cast<wint_t>(unit), system));
        EXPECT_EQ(VXToLowerW(static_cast<char16_t>(unit)), lower) << std::hex << unit;
        EXPECT_EQ(VXToUpperW(static_cast<char16_t>(unit)), upper) << std::hex << unit;
    }
    ::freelocale(system);
}

TEST(Text, FoldsInPlaceUnitByUnit)
{
    std::u16string all;
    for (std::uint32_t unit = 1; unit < 0x10000; ++unit)
        all += static_cast<char16_t>(unit);
    all += u"@AZ[`az{@AZ[`az{AZ";
    for (std::size_t start = 0; start < 8; ++start) {
        const std::u16string text = all.substr(start);
        std::u16string lower = text, upper = text;
        std::transform(text.begin(), text.end(), lower.begin(), VXToLowerW);
        std::transform(text.begin(), text.end(), upper.begin(), VXToUpperW);
        EXPECT_TRUE(std::u16string(VXStrToLowerW(TightText(text).get())) == lower);
        EXPECT_TRUE(std::u16string(VXStrToUpperW(TightText(text).get())) == upper);
    }
}

TEST(Text, NarrowsToUtf8)
{
    // The text, the room, the result and the content after it
    const std::tuple<std::u16string_view, std::int32_t, std::int32_t, std::string> cases[]
        = {{u"a\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF", 32, 21,
               "a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
            {u"\u20AC", 4, 4, "\xE2\x82\xAC"}, {u"\u20AC", 3, 0, ""}, {u"a\u20AC", 4, 0, ""}, {u"a\xD800", 9, -1, ""},
            {u"\xD800z", 9, -1, ""}, {u"\xDC00", 9, -1, ""}, {u"", 1, 1, ""}, {u"", 0, 0, ""}, {u"", -1, -1, ""}};
    for (const auto& [source, size, result, text] : cases) {
        char target[32] = "";
        for (const auto length : {static_cast<std::int32_t>(source.size()), -1}) {
            EXPECT_EQ(VXUnicodeToAnsi(source.data(), length, target, size), result) << size;
            EXPECT_EQ(target, text) << size;
        }
    }
}

std::u16string widen(const std::string& text)
{
    return {text.begin(), text.end()};
}

/// Compares with the C library in the C locale, whose results are limited to 32 bits here.
void expectAsStrtol(const std::string& text, int radix)
{
    using Limits = std::numeric_limits<std::int32_t>;
    SCOPED_TRACE(text + " in " + std::to_string(radix));
    char* end = nullptr;
    const long long wanted = std::strtoll(text.c_str(), &end, radix);
    const std::u16string wide = widen(text);
    const char16_t* wideEnd = nullptr;
    EXPECT_EQ(VXStrToLW(wide.c_str(), &wideEnd, radix), std::clamp<long long>(wanted, Limits::min(), Limits::max()));
    EXPECT_EQ(wideEnd - wide.c_str(), end - text.c_str());
    const bool isBeyond = wanted > UINT32_MAX || wanted < -static_cast<long long>(UINT32_MAX);
    EXPECT_EQ(VXStrToULW(wide.c_str(), &wideEnd, radix), isBeyond ? UINT32_MAX : static_cast<std::uint32_t>(wanted));
    EXPECT_EQ(wideEnd - wide.c_str(), end - text.c_str());
}

void expectAsStrtod(const std::string& text)
{
    char* end = nullptr;
    const double wanted = std::strtod(text.c_str(), &end);
    const std::u16string wide = widen(text);
    const char16_t* wideEnd = nullptr;
    const double value = VXStrToDW(wide.c_str(), &wideEnd);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(wanted))
        << text << " gave " << value << ", wanted " << wanted;
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
    const std::string zeros(5000, '0');
    char ofTheSmallest[1100]; // halfway between two doubles, which only the last digit shows, and half rounds up
    std::snprintf(ofTheSmallest, sizeof ofTheSmallest, "%.1075Lf", std::ldexp(3.0L, -1075));
    for (const std::string& text :
        {halfway + "." + zeros, halfway + "." + zeros + "1", halfway + zeros + "e-5000", halfway + zeros + "1e-5001",
            "0." + zeros + halfway + "e5016", "0x" + zeros + "1." + zeros + "1p-3", std::string(3000, '9'),
            "1.00000000000000033306690738754696212708950042724609375"s, std::string(ofTheSmallest), "." + zeros + "1"})
        expectAsStrtod(text);
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
        // More digits than a double has, around the smallest doubles
        std::snprintf(text, sizeof text, "0x%llx.%llxp-%u", static_cast<unsigned long long>(random() >> random() % 64),
            static_cast<unsigned long long>(random()), static_cast<unsigned>(random() % 1200));
        expectAsStrtod(text);
    }
}

} // namespace
