#include "legacy/CVXCmdLineParser.h"
#include "tests/vx/Common.h"
#include "vx/util/CommandLineParser.h"
#include "vx/util/OptionTable.h"

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
    // The text, the number of values and defaults of the option x (-1: not defined), and the elements
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
    char* arguments[] = {texts[0].data(), texts[1].data(), texts[2].data(), texts[3].data(), texts[4].data(), nullptr};
    TypeParam parser;
    parser.parse(6, arguments); // as `main` gets them, with the null after the last
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

TEST(CommandLineParser, LetsADerivedElementCopyAnyOther)
{
    struct Own : CommandLineParser::Element {
        Own()
            : Element(u"own", -7)
        {
        }
        using Element::addValue;
        using Element::copyValues;
    };
    CommandLineParser parser;
    parser.parse(u"parameter -option=1,2");
    Own own;
    own.addValue(u"gone after");
    own.copyValues(*parser.getElement(0));
    own.addValue(u"more");
    EXPECT_EQ(own.getValueString(0) + own.getValueString(1), u"parametermore");
    own.copyValues(*parser.getElement(1));
    EXPECT_EQ(own.getValueString(0) + own.getValueString(1), u"12");
    EXPECT_EQ(own.getValueCount(), 2);
    EXPECT_EQ(own.getName(), u"own");
    EXPECT_EQ(own.getPosition(), -7);
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

const OptionTable& table()
{
    static const OptionTable table("tool",
        {{.name = "out",
             .letter = 'o',
             .value = "FILE",
             .standard = "-",
             .help = "where to write, or - for\nthe screen"},
            {.name = "lines",
                .letter = 'l',
                .help = "é é é é é é é é é é é é é é é é é é é é é é é é é é é é é é é é word"},
            {.name = "line-end", .value = "lf|crlf", .help = "don't [mix]: them", .group = "Text"},
            {.name = "x-of-a-name-that-is-far-too-long", .letter = 'x', .help = "x", .group = "Text"},
            {.name = "n", .value = "N", .help = "how many", .group = "Numbers"}});
    return table;
}

/// The options as "written(value)", then the arguments as "[text]"; or what is wrong.
std::string optionsOf(const std::vector<const char*>& arguments, OptionTable::Order order, OptionTable::Faults faults)
{
    std::string text;
    try {
        std::vector<const char*> all {"tool"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const ParsedOptions options = table().parse(static_cast<int>(all.size()), all.data(), order, faults);
        for (const ParsedOptions::Given& each : options.getGiven())
            text += each.written + '(' + each.value + ')';
        for (const std::string& each : options.getArguments())
            text += '[' + each + ']';
        return text;
    } catch (const OptionException& failure) {
        return failure.getDescription().toUtf8();
    }
}

TEST(OptionTable, ReadsWhatUsersWriteAndNamesWhatItCannotRead)
{
    const std::tuple<std::vector<const char*>, const char*, const char*> cases[] = {
        // The arguments; what they are; what they are with options first and faults skipped, where that differs
        {{"a", "-lxo", "b", "-", "/tmp/x", "--out=", "--out", "--", "-ofile"},
            "-l()-x()-o(b)--out()--out(--)-o(file)[a][-][/tmp/x]",
            "[a][-lxo][b][-][/tmp/x][--out=][--out][--][-ofile]"},
        {{"-l", "--", "-x", "--", ""}, "-l()[-x][--][]", nullptr},
        {{"-o=b", "--out=a=b", "--n", "-5"}, "-o(=b)--out(a=b)--n(-5)", nullptr},
        {{"--x", "--lines", "--line-=lf"}, "--x()--lines()--line-(lf)", nullptr},
        {{"--li"}, "tool: option --li may be one of --lines, --line-end; see --help", ""},
        {{"-lyx", "-o1"}, "tool: unknown option -y; see --help", "-l()-x()-o(1)"},
        {{"--=1", "z"}, "tool: unknown option --; see --help", "[z]"},
        {{"-l", "--out"}, "tool: --out needs a value; see --help", "-l()"},
        {{"-xo"}, "tool: -o needs a value; see --help", "-x()"},
        {{"--lines=", "-l"}, "tool: --lines takes no value; see --help", "-l()"},
        {{"--line-end", "cr", "-x"}, "tool: --line-end takes lf|crlf, not \"cr\"; see --help", "-x()"},
        {{"--\xFF\xC3\xA9\xED\xA0\x80\xE2"}, "tool: unknown option --\uFFFDé\uFFFD\uFFFD\uFFFD\uFFFD; see --help", ""},
        {{"-l", "--a\nb\x1B[m"}, "tool: unknown option --a b [m; see --help", "-l()"},
    };
    for (const auto& [arguments, expected, skipped] : cases) {
        EXPECT_EQ(optionsOf(arguments, OptionTable::Order::MIXED, OptionTable::Faults::THROWN), expected);
        EXPECT_EQ(optionsOf(arguments, OptionTable::Order::OPTIONS_FIRST, OptionTable::Faults::SKIPPED),
            skipped != nullptr ? skipped : expected);
    }
    EXPECT_THROW(OptionTable("tool", {{.name = "a"}, {.name = "a"}}), Exception);
    EXPECT_THROW(OptionTable("tool", {{.name = "a", .letter = 'a'}, {.name = "b", .letter = 'a'}}), Exception);
}

TEST(OptionTable, GivesValuesByName)
{
    const char* const line[] = {"tool", "--n=7", "-ll", "--n", "18446744073709551615"};
    const ParsedOptions options = table().parse(5, line);
    EXPECT_EQ(options.get("out"), "-");
    EXPECT_FALSE(options.has("out"));
    EXPECT_EQ(options.getCount("lines"), 2U);
    EXPECT_EQ(options.getAll("n"), (std::vector<std::string> {"7", "18446744073709551615"}));
    EXPECT_EQ(options.getNumber<std::uint64_t>("n"), UINT64_MAX);
    EXPECT_EQ(saidBy<OptionException>([&] { options.getNumber("n", -1, 9); }),
        "tool: --n takes a number from -1 to 9, not \"18446744073709551615\"; see --help");
    EXPECT_EQ(saidBy<OptionException>([&] { options.get("line-end"); }), "tool: --line-end is missing; see --help");
    EXPECT_THROW(options.has("nothing"), Exception);
}

TEST(OptionTable, FindsARowByWhatAUserWrote)
{
    for (const auto& [written, name] :
        std::initializer_list<std::pair<const char*, std::string>> {{"--lines", "lines"}, {"--line-", "line-end"},
            {"-l", "lines"}, {"--li", ""}, {"--", ""}, {"-", ""}, {"-y", ""}, {"-lx", ""}, {"lines", ""}, {"", ""}}) {
        const OptionRow* row = table().findRow(written);
        EXPECT_EQ(row != nullptr ? row->name : "", name) << written;
    }
}

TEST(OptionTable, PrintsTheHelpTextAndScriptsOfShells)
{
    EXPECT_EQ(table().getHelp([](const OptionRow& row) { return std::string(row.help); }),
        R"(  -o, --out=FILE          where to write, or - for
                          the screen (-)
  -l, --lines             é é é é é é é é é é é é é é é é é é é é é é é é é é é
                          é é é é é word

Text:
      --line-end=lf|crlf  don't [mix]: them
  -x, --x-of-a-name-that-is-far-too-long
                          x

Numbers:
      --n=N               how many
)");
    const std::string_view words[] = {"get", "set"};
    const auto has = [&](OptionTable::Shell shell, std::string_view part) {
        const std::string script = table().getCompletion(shell, words);
        EXPECT_NE(script.find(part), script.npos) << script;
    };
    has(OptionTable::Shell::ZSH, R"('*'--line-end='[don'\''t \[mix\]\: them]:value:(lf crlf)')");
    has(OptionTable::Shell::FISH, R"(-l line-end -x -a 'lf crlf' -d 'don\'t [mix]: them')");
}

} // namespace
} // namespace vx::util
