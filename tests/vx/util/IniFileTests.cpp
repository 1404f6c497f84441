#include "vx/util/IniFile.h"

#include "tests/vx/Common.h"
#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vx/util/IniFileException.h"
#include "vx/util/IniFileIterator.h"

#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace std::literals;
using namespace vx::util;
using vx::String;

/// All that is in the file, as "[set]key=value,key=value,".
std::string dump(IniFile& file)
{
    std::string text;
    for (IniFileSetIterator sets(file, u""); sets.hasNext();) {
        const String set = sets.next();
        text += "[" + set.toUtf8() + "]";
        for (IniFileKeyIterator keys(file, set.getData()); keys.hasNext();) {
            const String key = keys.next();
            char16_t value[600];
            EXPECT_EQ(file.GetValue(set.getData(), key.getData(), value, 600), 0);
            text += key.toUtf8() + "=" + String(value).toUtf8() + ",";
        }
    }
    return text;
}

TEST(IniFile, ReadsLineByLine)
{
    const std::string full(500, 'v');
    const std::pair<std::string, std::string> cases[] = {
        {"[a]\n  k=v\n\tk=v\n\r\n\n#k=v\n;k=v\n:k=v\nl=1", "[a]l=1,"},
        {"k=dropped\n[a] trailing\n[b]b]\n[ c ]\n", "[ c ][a][b]b]"},
        {"[b]\r\nK=1\r\n[B]\r\nl=2\r\nL=\t3 \r\n", "[b]l=3,"}, // the value is replaced, the spelling of the key stays
        {"[a]\nk=1\nnothing\nl=2\n[b]\n", "[a]k=1,"},
        {"[a]\nk=1\n[b\nl=2\n", "[a]k=1,"},
        {"[]\nk=1\n[a]\n", "[]k=1,[a]"},
        {"[a]\n[]\nk=1\n", "[a]"},
        {"[a]\n=v\nk=\n", "[a]=v,k=,"},
        {"\xEF\xBB\xBF[\xC3\xA4]\nk=\xE2\x82\xAC\n\xEF\xBB\xBF# and again\n", "[\xC3\xA4]k=\xE2\x82\xAC,"},
        {"[a]\nk=x\xFFy\xE2\x82", "[a]k=x\xEF\xBF\xBDy\xEF\xBF\xBD\xEF\xBF\xBD,"},
        {"[a]\nk=v\0hidden\nl=1\n\0m=2\nn=3\n"s, "[a]k=v,l=1,n=3,"},
        {"[a]\nk=" + full + "12345678\nl=1", "[a]k=" + full + "12345678,l=1,"}, // exactly one piece
        {"[a]\nk=" + full + "12345678;x\nl=1", "[a]k=" + full + "12345678,l=1,"}, // the rest is a comment
        {"[a]\nk=" + full + "12345678m=2\nl=1", "[a]k=" + full + "12345678,l=1,m=2,"},
        {"[a]\nk=" + full + "1234567\xC3\xA4=2", "[a]k=" + full + "1234567\xEF\xBF\xBD,\xEF\xBF\xBD=2,"},
    };
    for (const auto& [bytes, read] : cases) {
        const Scratch scratch;
        put(scratch / "x.ini", bytes);
        IniFile file(scratch.full("x.ini").c_str(), nullptr, 1);
        EXPECT_EQ(dump(file), read) << bytes;
    }
}

struct IniFiles : testing::Test {
    std::string content() const { return contentOf(m_scratch / "x.ini"); }

    const Scratch m_scratch;
    const std::u16string m_path = m_scratch.full("x.ini");
};

TEST_F(IniFiles, ReplacesTheFileWithWhatItKnows)
{
    const std::string before = "\xEF\xBB\xBF# a comment\n[Z]\nb=2\nA=1\n[y]\n";
    put(m_scratch / "x.ini", before);
    IniFile file(m_path.c_str(), nullptr, 1);
    EXPECT_EQ(file.AddKey(u"z", u"B", u"\u00E4", false), vx::RESULT_ALREADY_EXISTS);
    EXPECT_EQ(content(), before);
    EXPECT_EQ(file.AddKey(u"z", u"B", u"\u00E4", true), 0);
    EXPECT_EQ(content(), "[y]\n\n[Z]\nA=1\nb=\xC3\xA4\n\n");
    EXPECT_EQ(file.DeleteKey(u"Z", u"c"), vx::RESULT_NOT_FOUND);
    EXPECT_EQ(file.DeleteKey(u"Z", u"a"), 0);
    EXPECT_EQ(content(), "[y]\n\n[Z]\nb=\xC3\xA4\n\n");
    for (const char16_t* set : {u"a", u"a\\b", u"a\\b\\c", u"ab", u"A\\d"})
        EXPECT_EQ(file.AddKey(set, u"k", u"", false), 0);
    EXPECT_EQ(file.DeleteSet(u"a\\none"), 0);
    EXPECT_EQ(file.DeleteSet(u"a"), 0); // sets below are found with regard to case
    EXPECT_EQ(dump(file), "[A\\d]k=,[y][Z]b=\xC3\xA4,");
    EXPECT_EQ(file.DeleteSet(u""), 0);
    EXPECT_EQ(content(), "");
}

TEST_F(IniFiles, WritesAsMuchAsALineHolds)
{
    IniFile file(m_path.c_str(), nullptr, 0);
    const String name(u's', 300);
    const String value = String(u'v', 253) + u"\u00E4x"; // the last byte would be half a character
    EXPECT_EQ(file.AddKey(name.getData(), u"k\xD800", value.getData(), false), 0);
    EXPECT_EQ(content(), "[" + std::string(259, 's') + "]\nk?=" + std::string(253, 'v') + "\n\n");
    char16_t found[600];
    EXPECT_EQ(file.GetValue(name.getData(), u"k\xD800", found, 600), 0); // not read again
    EXPECT_EQ(String(found), value);
}

TEST_F(IniFiles, CutsAValueThatDoesNotFit)
{
    IniFile file(m_path.c_str(), nullptr, 0);
    EXPECT_EQ(file.AddKey(u"s", u"k", u"abc", false), 0);
    EXPECT_EQ(file.GetValue(u"s", u"k", nullptr, 9), vx::RESULT_BUFFER_TOO_SMALL);
    const std::tuple<unsigned int, std::int32_t, std::u16string_view> cases[]
        = {{0, vx::RESULT_BUFFER_TOO_SMALL, u"----"}, {3, vx::RESULT_BUFFER_TOO_SMALL, u"abc-"}, {4, 0, u"abc\0"sv},
            {0xFFFFFFFF, 0, u"abc\0"sv}};
    for (const auto& [capacity, result, wanted] : cases) {
        char16_t value[] = u"----";
        EXPECT_EQ(file.GetValue(u"S", u"K", value, capacity), result) << capacity;
        EXPECT_EQ(std::u16string_view(value, 4), wanted) << capacity;
    }
}

TEST_F(IniFiles, IteratesOverASnapshot)
{
    put(m_scratch / "x.ini", "[a\\b]\n[a\\B\\c]\n[a\\b c]\n[A\\b\\d]\n[ab]\nk=1\nl=2\n[e\\f]\n");
    IniFile file(m_path.c_str(), nullptr, 1);
    const auto namesOf = [](auto iterator) {
        std::string names;
        while (iterator.hasNext())
            names += iterator.next().toUtf8() + "|";
        EXPECT_THROW(iterator.next(), IniFileException);
        return names;
    };
    IniFileSetIterator sets(file, u"a");
    IniFileKeyIterator keys(file, u"AB");
    EXPECT_EQ(file.DeleteSet(u""), 0);
    EXPECT_EQ(namesOf(sets), "b|b c|");
    EXPECT_EQ(namesOf(keys), "k|l|");
    EXPECT_THROW(IniFileKeyIterator(file, u"g"), IniFileException) << "a set that is not there has no keys";
}

TEST_F(IniFiles, SeesEachChangeAtOnce)
{
    EXPECT_THROW(IniFile(m_path.c_str(), nullptr, 1), IniFileException) << "the file must exist";
    IniFile writer(m_path.c_str(), nullptr, 0), reader(m_path.c_str(), nullptr, 0);
    for (int number = 100; number < 150; ++number) { // always of the same size
        EXPECT_EQ(writer.AddKey(u"s", u"k", String::valueOf(number).getData(), true), 0);
        EXPECT_EQ(dump(reader), "[s]k=" + std::to_string(number) + ",");
    }
    const IniFile copy(reader);
    reader.DeleteSet(u"s");
    reader = copy;
    EXPECT_EQ(dump(reader), ""); // its time is earlier than that of the file
    std::filesystem::remove(m_scratch / "x.ini");
    EXPECT_EQ(writer.AddKey(u"t", u"k", u"1", false), 0);
    EXPECT_EQ(dump(reader), "[s]k=149,[t]k=1,"); // the writer has no other indication of a change
}

TEST_F(IniFiles, WritesNothingOverWhatItCouldNotRead)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    put(m_scratch / "x.ini", "[a]\nk=1\n");
    ASSERT_EQ(::chmod(m_scratch.getPath().c_str(), 0777), 0);
    ASSERT_EQ(::chown((m_scratch / "x.ini").c_str(), 65534, 65534), 0);
    ASSERT_EQ(::chmod((m_scratch / "x.ini").c_str(), 0200), 0);
    Child child([&](Child::Side&) {
        ASSERT_EQ(::setresgid(65534, 65534, 65534), 0);
        ASSERT_EQ(::setresuid(65534, 65534, 65534), 0);
        IniFile file(m_path.c_str(), nullptr, 0);
        file.AddKey(u"b", u"k", u"2", false);
        EXPECT_EQ(::chmod((m_scratch / "x.ini").c_str(), 0600), 0);
        EXPECT_EQ(dump(file), "[a]k=1,[b]k=2,") << "what was told without knowing the file joins it";
        EXPECT_EQ(file.GetWriteResult(), vx::RESULT_ACCESS_DENIED) << "and is not in it yet";
        EXPECT_EQ(file.DeleteKey(u"a", u"k"), 0);
        EXPECT_EQ(file.GetWriteResult(), 0);
        EXPECT_EQ(content(), "[a]\n\n[b]\nk=2\n\n");
    });
    EXPECT_EQ(child.wait(), 0);
}

TEST(IniFile, KeepsWhatItCannotWriteUntilItCan)
{
    using Act = void (*)(const std::filesystem::path& folder);
    const auto makeFolder = [](const std::filesystem::path& folder) { std::filesystem::create_directory(folder); };
    const std::tuple<const char*, Act, Act> cases[] = {
        {"no folder", [](const auto&) {}, makeFolder},
        {"a file instead of the folder", [](const auto& folder) { put(folder, ""); },
            [](const auto& folder) { std::filesystem::remove(folder), std::filesystem::create_directory(folder); }},
        {"a folder instead of the file",
            [](const auto& folder) { std::filesystem::create_directories(folder / "x.ini"); },
            [](const auto& folder) { std::filesystem::remove(folder / "x.ini"); }},
    };
    for (const auto& [name, block, release] : cases) {
        const Scratch scratch;
        block(scratch / "d");
        IniFile file(scratch.full("d/x.ini").c_str(), nullptr, 0);
        EXPECT_EQ(file.GetWriteResult(), 0) << name << ": nothing has changed";
        for (const char16_t* key : {u"k", u"l"}) {
            EXPECT_EQ(file.AddKey(u"a", key, u"1", false), 0) << name;
            EXPECT_LT(IniFile(file).GetWriteResult(), 0) << name;
        }
        EXPECT_EQ(dump(file), "[a]k=1,l=1,") << name;
        release(scratch / "d");
        EXPECT_EQ(file.AddKey(u"b", u"k", u"2", false), 0) << name;
        EXPECT_EQ(file.GetWriteResult(), 0) << name;
        EXPECT_EQ(contentOf(scratch / "d/x.ini"), "[a]\nk=1\nl=1\n\n[b]\nk=2\n\n") << name;
    }
}

TEST_F(IniFiles, TellsThatTheDiskIsFull)
{
    IniFile file(m_path.c_str(), nullptr, 0);
    EXPECT_EQ(file.AddKey(u"a", u"k", u"1", false), 0);
    {
        const SizeLimit full(0);
        EXPECT_EQ(file.AddKey(u"a", u"l", u"2", false), 0);
    }
    const std::int32_t whenFull = file.GetWriteResult();
    EXPECT_LT(whenFull, 0);
    EXPECT_EQ(content(), "[a]\nk=1\n\n");
    EXPECT_EQ(file.GetWriteResult(), whenFull) << "nothing was written since";
    put(m_scratch / "x.ini", "[a]\nl=old\nm=3\n");
    EXPECT_EQ(file.DeleteSet(u"b"), 0);
    EXPECT_EQ(file.GetWriteResult(), 0);
    EXPECT_EQ(content(), "[a]\nl=2\nm=3\n\n") << "what others wrote, with the change that was still missing";
}

TEST_F(IniFiles, IsSharedByProcessesThatAreKilled)
{
    constexpr int PROCESSES = 4;
    const std::string name = "vx ini tests " + std::to_string(::getpid());
    IniFile file(m_path.c_str(), name.c_str(), 0);
    {
        std::vector<std::unique_ptr<Child>> children;
        for (int process = 0; process < PROCESSES; ++process)
            children.push_back(std::make_unique<Child>([&](Child::Side& parent) {
                IniFile own(m_path.c_str(), name.c_str(), 0);
                for (int number = 0;; ++number) {
                    own.AddKey(String::valueOf(process).getData(), String::valueOf(number).getData(), u"x", false);
                    parent.tell(number == 9 ? 'e' : '.');
                }
            }));
        for (const auto& child : children) { // each has ten keys in the file, and writes more
            while (child->hear() == '.') { }
            child->kill();
        }
    }
    char16_t value[4];
    for (int key = 0; key < 10 * PROCESSES; ++key)
        EXPECT_EQ(file.GetValue(String::valueOf(key / 10).getData(), String::valueOf(key % 10).getData(), value, 4), 0)
            << key;
}

} // namespace
