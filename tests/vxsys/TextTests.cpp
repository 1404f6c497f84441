#include "vxsys/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cwctype>
#include <iterator>
#include <locale.h>
#include <memory>
#include <string>
#include <utility>

namespace {

using namespace std::literals;

/// A text at the very end of its block, so that a check of memory sees each step too far. `offset` moves its start.
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

TEST(Text, ComparesByUnsignedUnit)
{
    EXPECT_EQ(VXStrCmpW(u"a", u"a"), 0);
    EXPECT_EQ(VXStrCmpW(u"a", u"ab"), -1);
    EXPECT_EQ(VXStrCmpW(u"\uFFFF", u"\x0001"), 1);
    EXPECT_EQ(VXStrCmpW(u"\uFF21", u"\U00010000"), 1) << "by unit, not by code point";
    EXPECT_EQ(VXStrCmpW(nullptr, u""), 0);
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

TEST(Text, ComparesUpToTheTerminatorWithoutRegardToCase)
{
    struct {
        std::u16string left;
        std::u16string right;
        std::int32_t count;
        std::int32_t result;
    } cases[] = {
        {u"ab", u"AB", 1000, 0},
        {u"abc", u"ABD", 2, 0},
        {u"abc", u"ABD", 3, -1},
        {u"A", u"ab", 1000, -1},
        {u"ab", u"A", 1000, 1},
        {u"_", u"A", 1, -1}, // compared in lower case
        {u"\u0416", u"\u0436", 2, 0},
        {u"a", u"b", 0, 0},
        {u"a", u"b", -1, 0},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(VXStrNICmpW(TightText(row.left).get(), TightText(row.right).get(), row.count), row.result)
            << &row - cases;
    }
    EXPECT_EQ(VXStrNICmpW(nullptr, u"", 3), 0);
    EXPECT_EQ(VXStrNICmpW(u"a", nullptr, 3), 1);
}

TEST(Text, FoldsTheBasicPlaneAsTheSystemDoes)
{
    // Got a case in Unicode 16, which the system may know
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
        std::u16string lower = text;
        std::u16string upper = text;
        std::transform(text.begin(), text.end(), lower.begin(), VXToLowerW);
        std::transform(text.begin(), text.end(), upper.begin(), VXToUpperW);
        EXPECT_TRUE(std::u16string(VXStrToLowerW(TightText(text).get())) == lower);
        EXPECT_TRUE(std::u16string(VXStrToUpperW(TightText(text).get())) == upper);
    }
}

TEST(Text, CopiesACountWithPaddingButNoTerminator)
{
    char16_t target[] = u"########";
    EXPECT_EQ(VXStrNCpyW(target, u"abc", 3), target);
    EXPECT_EQ(std::u16string_view(target), u"abc#####");
    VXStrNCpyW(target, u"x", 4);
    EXPECT_EQ(std::u16string_view(target, 8), std::u16string_view(u"x\0\0\0####", 8));
    VXStrNCpyW(target, u"yyyy", -1);
    EXPECT_EQ(std::u16string_view(target), u"x");
}

TEST(Text, SplitsIntoTokens)
{
    struct {
        const char* name;
        std::u16string text;
        const char16_t* delimiters;
        std::u16string joined;
        std::size_t left;
    } cases[] = {
        {"several separators", u" ,a,, b c", u" ,", u"a|b|c|", 9},
        {"none behind the last", u"a b ", u" ", u"a|b|", 4},
        {"only separators", u"  ", u" ", u"", 2},
        {"no text", u"", u" ", u"", 0},
        {"no separators", u"a b", u"", u"a b|", 3},
        {"null separators", u"a b", nullptr, u"a b|", 3},
    };
    for (auto& row : cases) {
        char16_t* position = nullptr;
        std::u16string joined;
        for (char16_t* token = VXStrTokW(row.text.data(), row.delimiters, &position); token != nullptr;
             token = VXStrTokW(nullptr, row.delimiters, &position))
            joined.append(token).append(u"|");
        EXPECT_EQ(joined, row.joined) << row.name;
        EXPECT_EQ(position - row.text.data(), static_cast<std::ptrdiff_t>(row.left)) << row.name;
    }

    char16_t mixed[] = u"a=b;c";
    char16_t* position = nullptr;
    EXPECT_EQ(std::u16string_view(VXStrTokW(mixed, u"=", &position)), u"a");
    EXPECT_EQ(*position, u'b') << "the position stands behind the separator";
    EXPECT_EQ(std::u16string_view(VXStrTokW(nullptr, u";", &position)), u"b");
    char16_t* nowhere = nullptr;
    EXPECT_EQ(VXStrTokW(nullptr, u";", &nowhere), nullptr);
}

TEST(Text, NarrowsToUtf8)
{
    struct {
        const char* name;
        std::u16string_view source;
        std::int32_t size;
        std::int32_t result;
        std::string text;
    } cases[] = {
        {"all forms", u"a\u007F\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF", 32, 21,
            "a\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
        {"exact room", u"\u20AC", 4, 4, "\xE2\x82\xAC"},
        {"no room for the terminator", u"\u20AC", 3, 0, ""},
        {"no room for a character", u"a\u20AC", 4, 0, ""},
        {"lone lead at the end", u"a\xD800", 9, -1, ""},
        {"lone lead inside", u"\xD800z", 9, -1, ""},
        {"lone trail", u"\xDC00", 9, -1, ""},
        {"empty", u"", 1, 1, ""},
        {"no room at all", u"", 0, 0, ""},
        {"negative room", u"", -1, -1, ""},
    };
    for (const auto& row : cases) {
        char target[32] = "";
        const auto length = static_cast<std::int32_t>(row.source.size());
        EXPECT_EQ(VXUnicodeToAnsi(row.source.data(), length, target, row.size), row.result) << row.name;
        EXPECT_EQ(target, row.text) << row.name;
        EXPECT_EQ(VXUnicodeToAnsi(row.source.data(), -1, target, row.size), row.result) << row.name;
    }
    char target[8];
    EXPECT_EQ(VXUnicodeToAnsi(nullptr, 0, target, 8), -1);
    EXPECT_EQ(VXUnicodeToAnsi(u"a", -2, target, 8), -1);
    EXPECT_EQ(VXUnicodeToAnsi(u"a", 1, nullptr, 8), -1);
}

} // namespace
