#include "vx/util/IniDocument.h"

#include "tests/AllocationProbe.h"
#include "tests/Random.h"
#include "tests/vx/Common.h"
#include "tests/vxsys/Scratch.h"
#include "vx/TerminatedText.h"
#include "vx/util/IniFile.h"
#include "vx/util/IniFileIterator.h"

namespace vx::util {
namespace {

using namespace std::literals;

/// Each entry as "line:set.name=value ", then each strange line as "line?text ".
std::string dump(const IniDocument& document)
{
    std::string text;
    for (const IniDocument::Entry& entry : document.getEntries())
        text += std::to_string(entry.line) + ':' + entry.set + '.' + entry.name + '=' + entry.value + ' ';
    for (const IniDocument::StrangeLine& line : document.getStrangeLines())
        text += std::to_string(line.line) + '?' + line.text + ' ';
    return text;
}

TEST(IniDocument, ReadsAnyTextAndKeepsIt)
{
    const std::pair<std::string, const char*> cases[] = {
        {"", ""},
        {"\xEF\xBB\xBF"
         "a=1\r\n[S]x]y \r\n b=2\r\n\tc\r\n  # d=4\r\n",
            "1:.a=1 2?[S]x]y  3? b=2 4?\tc "},
        {"[s]\n#a=1\n;a=1\n:a=1\n \t\n\nb=\n=c\nd = e = f \ng", "7:s.b= 8:s.=c 9:s.d=e = f 10?g "},
        {"[s\na=1\n[]\nb=2\0\n"s, "2:.a=1 1?[s 4?b=2"},
        {"[s] # c\n[t] a=1\nb=1\rc=1\n", "3:t.b=1\rc=1 2?[t] a=1 3?b=1\rc=1 "},
        {"[s]\na=1\n[t]\na=2\n[S]\nA=3", "2:s.a=1 4:t.a=2 6:S.A=3 "},
    };
    for (const auto& [text, content] : cases) {
        const IniDocument document = IniDocument::parse(text);
        EXPECT_EQ(document.getText(), text);
        EXPECT_STREQ(dump(document).c_str(), content); // up to a zero byte
    }
    const IniDocument document = IniDocument::parse(cases[5].first);
    EXPECT_EQ(document.find("s", "a")->line, 6U);
    EXPECT_EQ(document.getSets(), (std::vector<std::string> {"s", "t"}));
    EXPECT_FALSE(document.get("s", "b") || document.hasSet("u"));
}

TEST(IniDocument, ChangesNothingElse)
{
    using Change = std::function<void(IniDocument&)>;
    const auto set = [](const char* ofSet, const char* name, const char* value) -> Change {
        return [=](IniDocument& document) { document.set(ofSet, name, value); };
    };
    const auto remove = [](const char* ofSet, const char* name) -> Change {
        return [=](IniDocument& document) { EXPECT_TRUE(document.remove(ofSet, name)); };
    };
    const std::tuple<const char*, Change, const char*> cases[] = {
        {"[s]\r\nA\t=  1 \r\n# end\r\n", set("S", "a", "2 3"), "[s]\r\nA\t=  2 3 \r\n# end\r\n"},
        {"[s]\na=1\na=2\n", set("s", "a", ""), "[s]\na=1\na=\n"},
        {"[s]\na = \nb=\n", set("s", "a", "1"), "[s]\na = 1 \nb=\n"},
        {"[s]\na = \nb=\n", set("s", "b", "1"), "[s]\na = \nb=1\n"},
        {"[s]\na=1\n\n# t\n[t]\n", set("s", "b", "2"), "[s]\na=1\nb=2\n\n# t\n[t]\n"},
        {"[s]\n\n[t]\r\n", set("s", "b", "2"), "[s]\nb = 2\n\n[t]\r\n"},
        {"[s]\na=1\n[t]\n[S]\n", set("s", "b", "2"), "[s]\na=1\n[t]\n[S]\nb = 2\n"},
        {"[s]\r\na =1", set("s", "b", "2"), "[s]\r\na =1\r\nb = 2\r\n"},
        {"[s]\n", set("t", "b", "2"), "[s]\n\n[t]\nb = 2\n"},
        {"# c\n[s]\n", set("", "b", "2"), "# c\nb = 2\n[s]\n"},
        {"", set("t]u", "=", "2"), nullptr},
        {"", set("t]u", "b", "2=;"), "[t]u]\nb = 2=;\n"},
        {"\xEF\xBB\xBF[s]\n\xEF\xBB\xBF[t]\n\xEF\xBB\xBF"
         "b=1",
            set("t", "b", "2"),
            "\xEF\xBB\xBF[s]\n\xEF\xBB\xBF[t]\n\xEF\xBB\xBF"
            "b=2"}, // IniFile reads them so
        {"\xEF\xBB\xBF"
         "a=1",
            set("", "b", "2"),
            "\xEF\xBB\xBF"
            "a=1\nb=2\n"},
        {"[s]\na=1\n# c\nb=2\nA=3\n", remove("s", "a"), "[s]\n# c\nb=2\n"},
        {"# c\n[s]\na=1\n[t]\nb=2\n[S]\n#", [](IniDocument& document) { EXPECT_TRUE(document.removeSet("s")); },
            "# c\n[t]\nb=2\n"},
        {"a=1", [](IniDocument& document) { EXPECT_FALSE(document.removeSet("s") || document.remove("s", "a")); },
            "a=1"},
    };
    for (const auto& [before, change, after] : cases) {
        IniDocument document = IniDocument::parse(before);
        EXPECT_EQ(resultOf([&, &apply = change] { apply(document); }), after != nullptr ? 0 : RESULT_INVALID_ARGUMENT)
            << before;
        EXPECT_EQ(document.getText(), after != nullptr ? after : before);
    }
    for (const auto& [ofSet, name, value] :
        {std::tuple {"s\n"s, "a"s, "b"s}, {"s", " a", "b"}, {"s", "a ", "b"}, {"s", "[a", "b"}, {"s", "#a", "b"},
            {"s", "", "b\nc"}, {"s", "a", " b"}, {"s", "a", "b\t"}, {"s", "a\n", "b"}, {"s\0"s, "a", "b"},
            {"s",
                "\xEF\xBB\xBF"
                "a",
                "b"},
            {"s", "a\0"s, "b"}, {"s", "a", "b\0"s}, {"s", "a", "\xFF "}}) {
        IniDocument document;
        EXPECT_EQ(resultOf([&, &set = ofSet, &key = name, &text = value] { document.set(set, key, text); }),
            RESULT_INVALID_ARGUMENT)
            << name << value;
        EXPECT_EQ(document.getText(), "");
    }
}

TEST(IniDocument, StaysAsItWasWithoutMemory)
{
    const std::string name(40, 'x');
    for (const std::string text : {"[s]\na=1", "a=1", ""}) {
        IniDocument document;
        const auto add = [&] {
            document = IniDocument::parse(text);
            document.set(name, name, name);
        };
        EXPECT_GT(
            failEachAllocation(add, [&](int) { EXPECT_TRUE(document.getText() == text || document.getText() == ""); }),
            3);
    }
}

TEST(IniDocument, AgreesWithIniFileAfterRandomChanges)
{
    Random random;
    const Scratch scratch;
    const std::u16string path = scratch.full("x.ini");
    std::string text = "[s]\n";
    const char* const lines[] = {"[s]", "[T]", "a=1", "B = 2 ", "# a=0", "", "c=\t3", "[u]v"};
    for (int line = 0; line < 30; ++line)
        text.append(lines[random.below(8)]).append(random.below(2) == 0 ? "\n" : "\r\n");
    IniDocument document = IniDocument::parse(text);
    std::map<std::pair<std::string, std::string>, std::string> model;
    for (const IniDocument::Entry& entry : document.getEntries())
        model[{entry.set, entry.name}] = entry.value;
    for (int round = 0; round < 60; ++round) {
        const std::pair key(std::string(1, "sTu"[random.below(3)]), std::string(1, "aBcd"[random.below(4)]));
        if (random.below(3) == 0) {
            EXPECT_EQ(document.remove(key.first, key.second), model.erase(key) > 0);
        } else {
            model[key] = std::to_string(random.below(1000));
            document.set(key.first, key.second, model[key]);
        }
        for (const auto& [place, value] : model)
            EXPECT_EQ(document.get(place.first, place.second), value) << document.getText();
    }
    // One set of each name, as IniFile does not join them.
    IniDocument joined;
    for (const auto& [place, value] : model)
        joined.set(place.first, place.second, value);
    ASSERT_EQ(joined.save(path.c_str()), 0);
    IniFile file(path.c_str(), nullptr, 1);
    for (const auto& [place, wanted] : model) {
        const TerminatedText set {String(place.first)}, key {String(place.second)};
        char16_t value[20] = u"";
        EXPECT_EQ(file.GetValue(set, key, value, 20), 0);
        EXPECT_EQ(String(value).toUtf8(), wanted);
    }
}

TEST(IniDocument, IsAValue)
{
    IniDocument first = IniDocument::parse("a=1\n"), copy = first;
    copy.set("", "a", "2");
    EXPECT_EQ(first.getText(), "a=1\n");
    IniDocument moved = std::move(first);
    first.set("", "b", "3"); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(moved.getText() + first.getText(), "a=1\nb = 3\n");
    moved = copy;
    EXPECT_EQ(moved.getText(), "a=2\n");
}

TEST(IniDocument, TellsWhetherItIsOnTheDisk)
{
    const Scratch scratch;
    const std::u16string path = scratch.full("x.ini");
    EXPECT_EQ(resultOf([&] { IniDocument::load(path.c_str()); }), RESULT_NOT_FOUND);
    EXPECT_EQ(resultOf([&] { IniDocument::load(scratch.full().c_str()); }), RESULT_IS_DIRECTORY);
    put(scratch / "x.ini", "[s]\na=1");
    IniDocument document = IniDocument::load(path.c_str());
    document.set("s", "a", std::string(5000, 'x'));
    {
        const SizeLimit limit(1000);
        EXPECT_LT(document.save(path.c_str()), 0);
    }
    EXPECT_EQ(contentOf(scratch / "x.ini"), "[s]\na=1");
    EXPECT_EQ(document.save(path.c_str()), 0);
    EXPECT_EQ(contentOf(scratch / "x.ini"), document.getText());
    EXPECT_EQ(document.save(String(u"a\0b", 3)), RESULT_INVALID_NAME);
}

} // namespace
} // namespace vx::util
