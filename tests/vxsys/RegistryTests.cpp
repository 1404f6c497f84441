#include "vxsys/Registry.h"

#include "tests/Told.h"
#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vxsys/detail/RegistryRecord.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <ctime>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <thread>
#include <tuple>
#include <vector>

namespace {

/// The files and folders that this thread flushed.
thread_local std::set<std::filesystem::path> t_flushed;

} // namespace

extern "C" [[gnu::visibility("default")]] int fsync(int file)
{
    std::error_code ignored;
    t_flushed.insert(std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(file), ignored));
    return static_cast<int>(::syscall(SYS_fsync, file));
}

using namespace std::string_literals;
using namespace vxsys::results;

namespace {

class Registry : public testing::Test {
protected:
    static std::int32_t set(const std::u16string& key, const std::u16string& name, const std::string& data)
    {
        return VXRegistrySetValue(VX_HKEY_USER, key.c_str(), name.c_str(), VX_REG_BINARY, data.data(),
            static_cast<std::int32_t>(data.size()));
    }
    /// The data of a value, or its failure as a text.
    static std::string get(const std::u16string& key, const std::u16string& name)
    {
        std::string data(100'000, '\0');
        auto length = static_cast<std::int32_t>(data.size());
        ENUM_VX_REG_TYPE type = VX_REG_UINT32;
        const std::int32_t result
            = VXRegistryGetValue(VX_HKEY_USER, key.c_str(), name.c_str(), &type, data.data(), &length);
        if (failed(result))
            return result == RESULT_NOT_FOUND ? "none" : "failed";
        EXPECT_EQ(type, VX_REG_BINARY);
        return data.substr(0, static_cast<std::size_t>(length));
    }
    static std::vector<std::u16string> names(const char16_t* key, bool ofKeys)
    {
        VXRegistryEnum handle = nullptr;
        EXPECT_EQ((ofKeys ? VXRegistryOpenKeyEnum : VXRegistryOpenValueEnum)(VX_HKEY_USER, key, &handle), RESULT_OK);
        std::vector<std::u16string> found;
        for (;;) {
            char16_t name[255];
            std::int32_t length = std::size(name);
            const std::int32_t result = ofKeys
                ? VXRegistryEnumNextKey(handle, name, &length)
                : VXRegistryEnumNextValue(handle, name, &length, nullptr, nullptr, nullptr);
            if (failed(result)) {
                EXPECT_EQ(result, RESULT_NO_MORE_ITEMS);
                break;
            }
            found.emplace_back(name, static_cast<std::size_t>(length));
        }
        EXPECT_EQ(VXRegistryCloseEnum(handle), RESULT_OK);
        return found;
    }

    /// The bytes that this process has read so far, as the system counts them.
    static std::uint64_t bytesRead()
    {
        std::uint64_t count = 0;
        EXPECT_EQ(std::sscanf(contentOf("/proc/self/io").c_str(), "rchar: %" SCNu64, &count), 1);
        return count;
    }

    Scratch m_scratch;
    std::filesystem::path m_place = m_scratch / "store";
    ScopedVariable m_named {"VXSYS4_REGISTRY", m_place.c_str()};
    std::filesystem::path m_machine = m_scratch / "machine";
    ScopedVariable m_machineNamed {"VXSYS4_MACHINE_REGISTRY", m_machine.c_str()};
};

using Names = std::vector<std::u16string>;

TEST_F(Registry, KeepsEveryNameApartAndInItsFolder)
{
    const std::u16string longest(255, u'\x3042');
    const Names odd {u"..", u".", u"/", u"../../x", u"%", u"%2F", u"a%00", u"\x01\x1F\x7F", u" ", u"key", u"pending",
        u"lock", u"k-key", u"~", u"*?", u"\xD83D\xDE00", u"\x00E4", longest, longest.substr(1),
        std::u16string(255, u'x')};
    for (const std::u16string& name : odd)
        EXPECT_EQ(set(u"Odd\\" + name, name, std::to_string(&name - odd.data())), RESULT_OK) << &name - odd.data();
    for (const std::u16string& name : odd) {
        EXPECT_EQ(get(u"oDD\\\\" + name, name), std::to_string(&name - odd.data()));
        EXPECT_EQ(names((u"Odd\\" + name).c_str(), false), Names {name});
    }
    Names found = names(u"Odd", true), sorted = odd;
    std::sort(found.begin(), found.end());
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(found, sorted);
    EXPECT_EQ(names(u"", true), Names {u"Odd"});
    EXPECT_EQ(m_scratch.countEntries(), 1);
    std::u16string deep;
    for (int level = 0; level < 40; ++level)
        deep += u"\\" + longest;
    EXPECT_EQ(set(deep, u"", "deep"), RESULT_OK);
    EXPECT_EQ(get(deep, u""), "deep");
    EXPECT_EQ(VXRegistryDeleteKey(VX_HKEY_USER, longest.c_str()), RESULT_OK);
    EXPECT_EQ(get(deep, u""), "none");
}

TEST_F(Registry, KeepsTheCaseOfTheFirstWritingAndTellsNothingApartByIt)
{
    EXPECT_EQ(set(u"Key\\\x00C4pfel", u"Name", "1"), RESULT_OK);
    EXPECT_EQ(set(u"KEY\\\x00E4PFEL", u"nAME", "2"), RESULT_OK);
    EXPECT_EQ(get(u"key\\\x00C4PFEL", u"NAME"), "2");
    EXPECT_EQ(names(u"KEY", true), Names {u"\x00C4pfel"});
    EXPECT_EQ(names(u"key\\\x00E4pfel", false), Names {u"Name"});
}

TEST_F(Registry, TellsWhatIsWrong)
{
    const std::u16string tooLong(256, u'x');
    EXPECT_EQ(get(u"", u"a"), "none") << "no store yet";
    EXPECT_EQ(VXRegistryDeleteKey(VX_HKEY_USER, u"a"), RESULT_NOT_FOUND);
    EXPECT_FALSE(std::filesystem::exists(m_place)) << "looking made it";
    EXPECT_EQ(
        (Told {set(tooLong, u"", ""), set(u"a", tooLong, ""), set(u"a\xD83D", u"", ""), set(u"a", u"\xDE00", "")}),
        (Told {RESULT_NAME_TOO_LONG, RESULT_NAME_TOO_LONG, RESULT_INVALID_NAME, RESULT_INVALID_NAME}));
    EXPECT_EQ(VXRegistrySetValue(ENUM_VX_HKEY(5), u"a", u"", VX_REG_BINARY, "a", 1), RESULT_INVALID_ARGUMENT);
    for (const auto& [type, length] : {std::pair(4, 1), {VX_REG_STRING, 3}, {VX_REG_UINT64, 4}, {VX_REG_BINARY, -1}})
        EXPECT_EQ(
            VXRegistrySetValue(VX_HKEY_USER, u"a", u"", ENUM_VX_REG_TYPE(type), "abc", length), RESULT_INVALID_ARGUMENT)
            << type;
    EXPECT_EQ(VXRegistryDeleteKey(VX_HKEY_USER, u"\\"), RESULT_ACCESS_DENIED);
    ASSERT_EQ(set(u"a", u"v", "abcd"), RESULT_OK);
    ENUM_VX_REG_TYPE type = VX_REG_STRING;
    std::int32_t length = 2;
    char data[4] = "";
    EXPECT_EQ(VXRegistryGetValue(VX_HKEY_USER, u"a", u"v", &type, data, &length), RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ((Told {length, type}), (Told {4, VX_REG_BINARY})) << "told, although the data stayed away";
}

/// Whatever the values of the keys below contain, and however long they are.
TEST_F(Registry, ReadsNoMoreOfAKeyThanItsNameToListIt)
{
    for (const char16_t* key : {u"a\\B", u"a\\c"})
        ASSERT_EQ(set(key, u"v", std::string(1'000'000, 'x')), RESULT_OK);
    std::filesystem::resize_file(m_place / "user/k-a/k-c/key", 100'000);
    const std::uint64_t before = bytesRead();
    EXPECT_EQ(names(u"a", true), (Names {u"B", u"c"}));
    EXPECT_LT(bytesRead() - before, 20'000U);
    EXPECT_EQ(get(u"a\\c", u"v"), "failed") << "cut";
    put(m_place / "user/k-a/k-c/key", "half a record's");
    VXRegistryEnum none = nullptr;
    EXPECT_EQ(VXRegistryOpenKeyEnum(VX_HKEY_USER, u"a", &none), RESULT_STORE_CORRUPT);
}

TEST_F(Registry, IsForItsOwnerAlone)
{
    const mode_t before = ::umask(0);
    ASSERT_EQ(set(u"a", u"v", "1"), RESULT_OK);
    ::umask(before);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_place))
        EXPECT_EQ(int(entry.status().permissions()) & 077, 0) << entry.path();
    const std::tuple<const char*, int, std::string> cases[] = {
        {"others may read", 0755, "1"}, {"others may write", 0702, "failed"}, {"the group may write", 0770, "failed"}};
    for (const auto& [what, allowed, found] : cases) {
        std::filesystem::permissions(m_place, std::filesystem::perms(allowed));
        EXPECT_EQ(get(u"a", u"v"), found) << what;
        EXPECT_EQ(set(u"a", u"w", "2"), found == "1" ? RESULT_OK : RESULT_ACCESS_DENIED) << what;
    }
    std::filesystem::permissions(m_place, std::filesystem::perms(0700));
    std::filesystem::rename(m_place, m_scratch / "elsewhere");
    std::filesystem::create_directory_symlink(m_scratch / "elsewhere", m_place);
    EXPECT_EQ(get(u"a", u"v"), "failed");
    const ScopedVariable relative("VXSYS4_REGISTRY", "elsewhere");
    EXPECT_EQ(set(u"a", u"v", "2"), RESULT_INVALID_NAME);
}

TEST_F(Registry, SeesWhatIsDoneToAValueThatItHasReadBefore)
{
    const std::tuple<const char*, std::function<void()>, std::string> cases[] = {
        {"a change by this process", [] { set(u"a", u"v", "2"); }, "2"},
        {"changes by another one",
            [] { Child([](Child::Side&) { set(u"a", u"v", "2"), set(u"a", u"v", "3"); }).wait(); }, "3"},
        {"another value beside it", [] { set(u"a", u"w", "2"); }, "1"},
        {"a removal of the value", [] { VXRegistryDeleteValue(VX_HKEY_USER, u"a", u"v"); }, "none"},
        {"a removal of the key", [] { VXRegistryDeleteKey(VX_HKEY_USER, u"A"); }, "none"},
        {"a key made anew", [] { VXRegistryDeleteKey(VX_HKEY_USER, u"a"), set(u"A", u"V", "4"); }, "4"},
        {"a store that is open to others", [&] { ::chmod(m_place.c_str(), 0777); }, "failed"},
        {"a file that is open to others", [&] { ::chmod((m_place / "user/k-a/key").c_str(), 0666); }, "failed"},
        {"a link in the store's place",
            [&] {
                std::filesystem::rename(m_place, m_scratch / "elsewhere");
                std::filesystem::create_directory_symlink("elsewhere", m_place);
            },
            "failed"},
        {"another store in its place",
            [&] { std::filesystem::rename(m_place, m_scratch / "elsewhere"), set(u"a", u"v", "5"); }, "5"},
    };
    const auto useStore = [&](std::size_t number) {
        m_place = m_scratch / ("store" + std::to_string(number)).c_str();
        ::setenv("VXSYS4_REGISTRY", m_place.c_str(), 1);
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        useStore(i);
        ASSERT_EQ(set(u"a", u"v", "1"), RESULT_OK);
    }
    // An answer is only stored if the file is older than a step of the system's clock for files.
    const auto isYoung = [&] {
        struct stat file;
        timespec now;
        EXPECT_EQ(::stat((m_place / "user/k-a/key").c_str(), &file), 0);
        ::clock_gettime(CLOCK_REALTIME, &now);
        return (now.tv_sec - file.st_ctim.tv_sec) * 1000 + (now.tv_nsec - file.st_ctim.tv_nsec) / 1'000'000 < 60;
    };
    while (isYoung())
        std::this_thread::yield();
    for (std::size_t row = 0; row < std::size(cases); ++row) {
        const auto& [what, work, found] = cases[row];
        useStore(row);
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(get(u"a", u"v"), "1") << what;
        work();
        EXPECT_EQ(get(u"a", u"v"), found) << what;
        std::filesystem::remove_all(m_scratch / "elsewhere");
    }
}

TEST_F(Registry, ShowsBesideItsOwnWhatAllUsersHave)
{
    const auto setForAll = [&](const char16_t* key, const char16_t* name, const char* data) {
        const ScopedVariable there("VXSYS4_REGISTRY", m_machine.c_str());
        EXPECT_EQ(set(key, name, data), RESULT_OK);
    };
    const auto remove = [](const char16_t* name) { return VXRegistryDeleteValue(VX_HKEY_USER, u"a", name); };
    setForAll(u"A\\Sub", u"V", "all");
    setForAll(u"A\\b", u"", "all");
    setForAll(u"A", u"V", "all");
    setForAll(u"A", u"w", "all");
    EXPECT_EQ(names(u"", true), Names {u"A"}) << "without a store of the user";
    EXPECT_EQ(get(u"a", u"v"), "all");
    EXPECT_EQ((Told {remove(u"v"), remove(u"x"), VXRegistryDeleteKey(VX_HKEY_USER, u"a"),
                  VXRegistryDeleteKey(VX_HKEY_USER, u"x")}),
        (Told {RESULT_ACCESS_DENIED, RESULT_NOT_FOUND, RESULT_ACCESS_DENIED, RESULT_NOT_FOUND}));
    EXPECT_FALSE(std::filesystem::exists(m_place));

    EXPECT_EQ((Told {set(u"a", u"v", "own"), set(u"a", u"a", "own"), set(u"a\\c", u"", ""), set(u"a\\SUB", u"", "")}),
        (Told {RESULT_OK, RESULT_OK, RESULT_OK, RESULT_OK}));
    EXPECT_EQ(names(u"a", false), (Names {u"a", u"v", u"w"}));
    EXPECT_EQ(names(u"a", true), (Names {u"b", u"c", u"SUB"}));
    EXPECT_EQ(get(u"a", u"v") + get(u"a", u"w") + get(u"a\\sub", u"v"), "ownallall");
    EXPECT_EQ((Told {remove(u"v"), remove(u"v")}), (Told {RESULT_OK, RESULT_ACCESS_DENIED}));
    EXPECT_EQ(get(u"a", u"v"), "all") << "seen again";

    std::filesystem::permissions(m_machine, std::filesystem::perms(0777));
    EXPECT_EQ(get(u"a", u"a") + get(u"a", u"w"), "ownfailed") << "others could have changed it";
    ::setenv("VXSYS4_MACHINE_REGISTRY", "", 1);
    EXPECT_EQ(get(u"a", u"w"), "none");
    char place[8];
    EXPECT_EQ(VXRegistryGetMachinePlace(place, 0), RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(VXRegistryGetMachinePlace(place, 1), RESULT_OK);
}

TEST_F(Registry, TellsWhereTheStoreOfTheUserIs)
{
    const auto place = [] {
        char path[PATH_MAX] = "";
        EXPECT_EQ(VXRegistryGetPlace(path, sizeof path), RESULT_OK);
        return std::string(path);
    };
    EXPECT_EQ(place(), m_place.string());
    const ScopedVariable none("VXSYS4_REGISTRY", ""), home("HOME", "/h"), data("XDG_DATA_HOME", "relative");
    EXPECT_EQ(place(), "/h/.local/share/vxsys4/registry");
    const ScopedVariable other("XDG_DATA_HOME", "/d");
    EXPECT_EQ(place(), "/d/vxsys4/registry");
    char small[20];
    EXPECT_EQ(VXRegistryGetPlace(small, 18), RESULT_BUFFER_TOO_SMALL);
    EXPECT_EQ(VXRegistryGetPlace(small, 19), RESULT_OK);
}

TEST(RegistryRecord, ReadsNothingBeyondWhateverItSays)
{
    const vxsys::detail::RegistryRecord record {u"Key", {{u"", VX_REG_BINARY, "odd"}, {u"n", VX_REG_UINT32, "1234"}}};
    const std::u16string units = record.write();
    vxsys::detail::RegistryRecord again;
    std::mt19937 random(4);
    for (int round = 0; round < 20'000; ++round) {
        std::u16string broken = units.substr(0, units.size() - random() % 2 * (random() % units.size()));
        broken[random() % broken.size()] = static_cast<char16_t>(random());
        vxsys::detail::RegistryPlace place;
        const bool isFine = again.read(broken);
        EXPECT_EQ(place.find(broken, u"N"), isFine) << round;
        if (isFine) {
            EXPECT_EQ(again.write().size(), broken.size()) << round;
            place.put(broken, {u"n", VX_REG_BINARY, "longer"});
            EXPECT_TRUE(again.read(broken) && place.find(broken, u"n") && place.value()->data == "longer") << round;
        }
    }
    ASSERT_TRUE(again.read(units));
    EXPECT_EQ(again.write(), units);
}

TEST_F(Registry, IsOnTheDiskWithTheWayToIt)
{
    const std::filesystem::path place = m_scratch / "new" / "deep" / "store";
    const ScopedVariable named("VXSYS4_REGISTRY", place.c_str());
    t_flushed.clear();
    EXPECT_EQ(set(u"k", u"", "x"), RESULT_OK);
    for (std::filesystem::path folder = place; folder != m_scratch.getPath().parent_path();
         folder = folder.parent_path())
        EXPECT_TRUE(t_flushed.contains(folder)) << folder;
}

TEST_F(Registry, GoesOnBehindAKilledChange)
{
    ASSERT_EQ(set(u"a", u"v", "1"), RESULT_OK);
    std::filesystem::create_directories(m_place / "pending" / "k-x" / "k-y");
    put(m_place / "pending" / "k-x" / "key", "half");
    EXPECT_EQ(set(u"b\\c", u"v", "2"), RESULT_OK);
    put(m_place / "pending", "half");
    EXPECT_EQ(set(u"a", u"v", "3"), RESULT_OK);
    EXPECT_FALSE(std::filesystem::exists(m_place / "pending"));
    EXPECT_EQ(get(u"a", u"v") + get(u"b\\c", u"v"), "32");
}

/// A text whose completeness can be checked: one letter, which also determines the length.
std::string wholeText(unsigned number)
{
    return std::string(1 + number % 26 * 300, static_cast<char>('a' + number % 26));
}

bool isWhole(const std::string& text)
{
    return text == "none"
        || (text != "failed" && !text.empty() && text == wholeText(static_cast<unsigned>(text[0] - 'a')));
}

TEST_F(Registry, GivesWholeValuesWhileWritersAreKilled)
{
    constexpr int WRITERS = 4;
    const std::u16string key = u"Shared\\Key";
    const auto change = [&](Child::Side&) {
        std::mt19937 random(static_cast<unsigned>(::getpid()));
        for (;;) {
            const unsigned number = random();
            const std::u16string name(1, static_cast<char16_t>(u'A' + number % 3));
            std::int32_t result = RESULT_OK;
            if (number % 16 == 0)
                result = VXRegistryDeleteKey(VX_HKEY_USER, number % 32 == 0 ? u"Shared" : key.c_str());
            else if (number % 16 == 1)
                result = VXRegistryDeleteValue(VX_HKEY_USER, key.c_str(), name.c_str());
            else
                result = set(key, name, wholeText(number));
            if ((failed(result) && result != RESULT_NOT_FOUND) || !isWhole(get(key, name)))
                ::_exit(3);
        }
    };
    std::vector<std::unique_ptr<Child>> writers(WRITERS);
    std::mt19937 random(99);
    for (int turn = 0; turn < 24; ++turn) {
        std::unique_ptr<Child>& writer = writers[random() % WRITERS];
        ASSERT_FALSE(writer != nullptr && writer->hasEnded()) << "a writer saw a failure or half a value";
        writer = std::make_unique<Child>(change); // kills the previous one
        for (unsigned rest = random() % 20; rest > 0; --rest) {
            for (const char16_t* name : {u"A", u"B", u"C"})
                ASSERT_TRUE(isWhole(get(key, name)));
        }
    }
    writers.clear();
    EXPECT_EQ(set(key, u"A", "after"), RESULT_OK);
    EXPECT_EQ(get(key, u"A"), "after");
}

TEST_F(Registry, LosesNoChangeOfThreadsAndProcesses)
{
    constexpr int EACH = 15;
    const auto add = [](char16_t who) {
        for (int i = 0; i < EACH; ++i) {
            const std::u16string name {who, static_cast<char16_t>(u'a' + i)};
            EXPECT_EQ(set(u"k", name, "x"), RESULT_OK);
            EXPECT_EQ(set(u"k\\" + name, u"", "x"), RESULT_OK);
        }
    };
    Child other([&](Child::Side&) { add(u'1'); });
    std::thread second([&] { add(u'2'); });
    add(u'3');
    second.join();
    EXPECT_EQ(other.wait(), 0);
    EXPECT_EQ(names(u"k", false).size(), std::size_t {3 * EACH});
    EXPECT_EQ(names(u"k", true).size(), std::size_t {3 * EACH});
}

} // namespace
