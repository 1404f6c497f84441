#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "vx/NumberBoxes.h"
#include "vx/Str1.h"

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace vx {
namespace {

/// The rules in their simplest form: one search for each argument, then one pass over the places that were found.
std::u16string filled(std::u16string text, const std::vector<std::u16string>& arguments)
{
    std::map<std::size_t, std::size_t> places;
    const auto placeholder = [](std::size_t number) {
        const std::string digits = std::to_string(number);
        return u'{' + std::u16string(digits.begin(), digits.end()) + u'}';
    };
    for (std::size_t number = 0; text.find(placeholder(number)) != text.npos; ++number) {
        for (std::size_t at = text.find(placeholder(number)); at != text.npos;
             at = text.find(placeholder(number), at + placeholder(number).size()))
            places[at] = number;
    }
    std::size_t scan = 0;
    for (const auto& [place, number] : places) {
        const std::size_t at = text.find(placeholder(number), scan);
        text.replace(at, placeholder(number).size(), arguments.at(number));
        scan = at + arguments.at(number).size();
    }
    return text;
}

TEST(String, FormatsValuesThatTheCompilerChecks)
{
    const String text(u"t\0t", 3);
    const Str1 str1(u"one");
    const std::string narrow("ü");
    const Reference<Integer32> box(new Integer32(-7));
    const Reference<Integer32> none;
    const Exception object(u"no");
    const String all = String().format(u"{0}|{1}|{2}|{3}|{4}|{5}|{6}|{7}|{8}", -1, text, str1, narrow, "é", u"x",
        std::u16string(u"w"), std::u16string_view(u"v"), u8"ä", static_cast<const char16_t*>(nullptr));
    EXPECT_EQ(all, std::u16string_view(u"t\0t|one|ü|é|x|w|v|ä|", 20));
    EXPECT_EQ(String().format(u"{0} {1} {2} {3} {4} {5} {6}", -1, true, INT64_MIN, UINT64_MAX, 2.5F, 1e300, 'c', u'd'),
        u"true -9223372036854775808 18446744073709551615 2.5 1e+300 c d");
    EXPECT_EQ(String().format(u"{0} {1} {2} {3}", -1, static_cast<signed char>(-1), std::uint8_t {200}, 3L, 4ULL),
        u"-1 200 3 4");
    EXPECT_EQ(String().format(u"{0} {1} {2}", box, none, *box), u"-7 null -7");
    EXPECT_EQ(String().format(u"{0}{1}{2}{0}", -1, 1), u"1{1}{2}1") << "the rest has no argument";
    EXPECT_EQ(String().format(u"{0}{1}XX", 6, 1, 2), u"12") << "the length ends the template";
    EXPECT_EQ(String().format(u"{0}{1}{2}{3}{4}{5}{6}{7}{8}{9}{10}{00}{4294967296}", -1, u"a", u"{2}", u"", u"3", u"4",
                  u"5", u"6", u"7", u"8", u"9", u"10"),
        u"a{2}345678910{00}{4294967296}");
    EXPECT_EQ(String(u"old").format(nullptr, -1), u"");
    EXPECT_EQ(String::formatted(u"{0}{1}{2}", 42, true, u'x'), u"42truex") << "no argument is a length";
    EXPECT_EQ(String::formatted(u"{0}"), u"{0}");
    EXPECT_EQ(String::formatted(u"{} { {x} {\"{0}\": {1}} {", 1, 2, 3), u"{} { {x} {\"1\": 2} {");
    char16_t atRunTime[] = u"{0} {5}";
    static const char16_t fixed[] = u"{0}!";
    EXPECT_EQ(String::formatted(atRunTime, 1), u"1 {5}");
    EXPECT_EQ(String::formatted(fixed + 0, 1) + String::formatted(std::u16string(u"{0}"), 2), u"1!2");
    EXPECT_EQ(String::formatted(std::u16string_view(u"{0}\0{0}", 7), nullptr), std::u16string_view(u"\0", 1));
    String self(u"{1} {0}");
    EXPECT_EQ(self.format(self, self, 5), u"5 {1} {0}");
    EXPECT_EQ(self.format(String(u"{0}"), self), u"5 {1} {0}");
    EXPECT_EQ(self.format(std::u16string(u"{0}!"), u"only texts", 0), u"only texts!");
}

const String& formattedBy(String& text, const char16_t* form, int length, ...)
{
    std::va_list arguments;
    va_start(arguments, length);
    text.formatv(form, length, arguments);
    va_end(arguments);
    return text;
}

TEST(String, FormatsByTheRules)
{
    Random random;
    const std::u16string_view pieces[]
        = {u"{0}", u"{1}", u"{2}", u"{3}", u"{4}", u"{", u"}", u"0", u"x", u"{{", u"{01}"};
    const auto anyText = [&](unsigned longest) {
        std::u16string text;
        for (unsigned i = random() % longest; i > 0; --i)
            text += pieces[random() % std::size(pieces)];
        return text;
    };
    for (int round = 0; round < 10000; ++round) {
        const std::u16string form = anyText(12);
        std::vector<std::u16string> values;
        for (int i = 0; i < 5; ++i)
            values.push_back(anyText(4));
        String text;
        ASSERT_EQ(formattedBy(text, form.c_str(), static_cast<int>(form.size()), values[0].c_str(), values[1].c_str(),
                      values[2].c_str(), values[3].c_str(), values[4].c_str()),
            filled(form, values))
            << String(form);
    }
}

template <class Value>
std::string printed(const char* form, Value value)
{
    char text[400];
    std::snprintf(text, sizeof text, form, value);
    return text;
}

template <class Value>
void expectPrinted(const char* form)
{
    using Limits = std::numeric_limits<Value>;
    for (const Value value : {Value(0), Value(1), Value(-1), Value(42), Limits::min(), Limits::max(), Limits::lowest()})
        EXPECT_EQ(String::valueOf(value).toUtf8(), printed(form, value)) << form;
    for (Value power = 10; power < Limits::max() / 10; power *= 10) { // each number of digits
        for (const Value value : {Value(power - 1), power, Value(0 - power), Value(1 - power)})
            EXPECT_EQ(String::valueOf(value).toUtf8(), printed(form, value)) << form;
    }
}

double inPowersOfTen(double value, int exponent)
{
    return exponent < 0 ? value / std::pow(10.0, -exponent) : value * std::pow(10.0, exponent);
}

TEST(String, PrintsValuesAsTheCRuntimeDoes)
{
    expectPrinted<int>("%d");
    expectPrinted<unsigned int>("%u");
    expectPrinted<long>("%ld");
    expectPrinted<unsigned long>("%lu");
    expectPrinted<long long>("%lld");
    expectPrinted<unsigned long long>("%llu");
    expectPrinted<float>("%g");
    expectPrinted<double>("%g");
    const double doubles[] = {1.5, -0.0, 0.1, 100000, 1000000, 999999.5, 123456789, 1e-4, 1e-5, 1e100, 4.9e-324, 2.5e-5,
        INFINITY, -INFINITY, NAN, 0.30000000000000004};
    for (const double value : doubles) {
        EXPECT_EQ(String::valueOf(value).toUtf8(), printed("%g", value));
        EXPECT_EQ(String::valueOf(static_cast<float>(value)).toUtf8(), printed("%g", static_cast<float>(value)));
    }
    Random random;
    for (int round = 0; round < 20000; ++round) {
        const std::uint64_t bits = std::uint64_t {random()} << 32 | random();
        double value = 0;
        static_assert(sizeof value == sizeof bits);
        std::memcpy(&value, &bits, sizeof value);
        ASSERT_EQ(String::valueOf(value).toUtf8(), printed("%g", value));

        // Half a unit of the last digit printed, the doubles next to it, and a whole number, at any place of the point.
        const int exponent = static_cast<int>(random() % 46) - 23;
        const double half = inPowersOfTen(random() % 1'000'000 + 0.5, exponent);
        for (const double near : {half, -half, std::nextafter(half, 0), std::nextafter(half, HUGE_VAL),
                 inPowersOfTen(random() % 2'000, exponent)})
            ASSERT_EQ(String::valueOf(near).toUtf8(), printed("%g", near));
    }
    EXPECT_EQ(String::valueOf(true), u"true");
    EXPECT_EQ(String::valueOf(false).getData(), String::valueOf(false).getData()) << "a literal, and no copy of it";
    EXPECT_EQ(String::valueOf(u'\u20AC'), u"\u20AC");
    EXPECT_EQ(String::valueOf('A'), u"65") << "a number of its type";
}

} // namespace
} // namespace vx
