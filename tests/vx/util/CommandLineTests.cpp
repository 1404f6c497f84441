#include "legacy/CVXCmdLineParser.h"
#include "tests/Outcome.h"
#include "vx/Exception.h"
#include "vx/util/CommandLineParser.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace vx::util {
namespace {

/// All elements in their order: parameters as "[text]", options as "name(value,value)".
template <class Parser>
std::string elementsOf(const Parser& parser)
{
    std::string text;
    int parameters = 0;
    for (int index = 0; index < parser.getElementCount(); ++index) {
        const auto element = parser.getElement(index);
        EXPECT_EQ(element->getPosition(), index);
        const bool isParameter = parameters < parser.getParameterCount() && parser.getParameter(parameters) == element;
        parameters += isParameter;
        text += element->getName().toUtf8() + (isParameter ? '[' : '(');
        for (int value = 0; value < element->getValueCount(); ++value)
            text += (value > 0 ? "," : "") + element->getValueString(value).toUtf8();
        text += isParameter ? ']' : ')';
    }
    EXPECT_EQ(parameters, parser.getParameterCount());
    return text;
}

template <class Parser>
class CommandLineParsers : public testing::Test {
};
using Parsers = testing::Types<CommandLineParser, CVXCmdLineParser>;
TYPED_TEST_SUITE(CommandLineParsers, Parsers);

TYPED_TEST(CommandLineParsers, TakeACommandLineApartAndJoinArguments)
{
    // The text; count and defaults of the option x, which is defined unless the count is -1; the elements
    const std::tuple<const char16_t*, int, const char16_t*, const char*> cases[]
        = {{u"", -1, nullptr, ""}, {u"a -x b", 1, nullptr, "[a]x(b)"}, {u"-x a -y b", 2, nullptr, "x(a)[b]"},
            {u"-x -y", 1, u"d", "x(d)y()"}, {u"-x", 1, u"d", "x(d)"}, {u"-x  -y", 1, u"d", "x()"},
            {u"-x=1,2,,3 y", 1, nullptr, "x(1,2,3)[y]"}, {u"-x=a=b", -1, nullptr, "x(a=b)"},
            {u"--x /x -/x", -1, nullptr, "x()x()x()"}, {u"\"a b\"  c", -1, nullptr, "[a b][c]"},
            {u"\"-x=1 2\" c", -1, nullptr, "x(1 2)[c]"}, {u"-x=\"a b\"", -1, nullptr, "x(a)[b\"]"},
            {u"-x \"a b\" c", 1, nullptr, "x(a b)[c]"}, {u"a\"b c", -1, nullptr, "[a\"b][c]"},
            {u"/tmp/x -", -1, nullptr, "tmp/x()()"}, {u"-x -y", 0, u"1,2 \"3 4\"", "x(1,2,3 4)y()"}};
    for (const auto& [text, count, defaults, expected] : cases) {
        TypeParam parser;
        if (count >= 0)
            parser.defineOption(u"x", count, defaults);
        parser.parse(u"gone before");
        parser.parse(text);
        EXPECT_EQ(elementsOf(parser), expected) << String(text);
    }
    std::string texts[] = {"program", "-x=a b", "Größe", "two words", "-\xED\xA0\x80=\xFFö\xE2\x82"};
    char* arguments[] = {texts[0].data(), texts[1].data(), texts[2].data(), texts[3].data(), texts[4].data()};
    TypeParam parser;
    parser.parse(5, arguments);
    EXPECT_EQ(elementsOf(parser), "[program]x(a b)[Größe][two words]\uFFFD\uFFFD\uFFFD(\uFFFDö\uFFFD\uFFFD)");
}

TYPED_TEST(CommandLineParsers, FindOptionsByNameInTheCaseThatCounts)
{
    TypeParam parser;
    parser.defineOption(u"size", 1, u"10");
    parser.defineOption(u"Other", 1, nullptr);
    parser.parse(u"-X=1 -x=2 -x=3");
    EXPECT_EQ(parser.getValueString(u"x", 0), u"3") << "the last one";
    EXPECT_EQ(parser.getValueString(u"X", 0), u"1");
    parser.setIgnoreCase(true);
    EXPECT_EQ(parser.getValueString(u"X", 0), u"3");
    EXPECT_EQ(parser.getValueLong(u"SIZE", 0), 10) << "a default";
    EXPECT_FALSE(parser.isPresent(u"size"));
    EXPECT_TRUE(parser.getOption(u"other") == nullptr) << "a definition without defaults";
    TypeParam copy(parser);
    parser.parse(u"");
    EXPECT_EQ(copy.getValueString(u"x", 0), u"3");
}

TYPED_TEST(CommandLineParsers, ReadNumbersAndSayWhatIsMissing)
{
    TypeParam parser;
    parser.parse(u"-n=0x10,12abc,010,-5,2.5e3z,x,99999999999");
    for (const auto& [index, value] : {std::pair {0, 16}, {1, 12}, {2, 8}, {3, -5}, {4, 2}, {6, 0x7FFFFFFF}})
        EXPECT_EQ(parser.getValueLong(u"n", index), value);
    EXPECT_EQ(parser.getValueDouble(u"n", 4), 2500);
    EXPECT_THROW(parser.getValueLong(u"n", 5), Exception);
    EXPECT_THROW(parser.getValueString(u"n", -1), Exception);
    EXPECT_EQ(saidBy<Exception>([&] { parser.getValueLong(u"none", 0); }), "No option none");
}

TEST(CVXCmdLineParser, TakesAPairOfQuotesForAnEmptyToken)
{
    const std::tuple<const char16_t*, const char*, const char*> cases[] = {
        {u"\"\" a", "[ a]", "()[a]"}, {u"a \"\"", "[a]", "[a]()"},
        {u"-x=\"\",b", "x(,b)", "x(,b)"}, // one value ",b", and two values of which the first is empty
        {u"-y \"\" b", "y( b)", "y()[b]"}, // an empty token is no value
    };
    for (const auto& [text, ofNewer, ofOlder] : cases) {
        const auto parsed = [text = text](auto parser) {
            parser.defineOption(u"y", 1, nullptr);
            parser.parse(text);
            return elementsOf(parser);
        };
        EXPECT_EQ(parsed(CommandLineParser()), ofNewer) << String(text);
        EXPECT_EQ(parsed(CVXCmdLineParser()), ofOlder) << String(text);
    }
}

} // namespace
} // namespace vx::util
