#include "tests/AllocationProbe.h"
#include "tests/Threads.h"
#include "tests/vx/Common.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Describe.h"
#include "vx/Occasion.h"
#include "vx/collections/ValueCollections.h"
#include "vx/exec/Process.h"
#include "vx/exec/SharedLibrary.h"
#include "vx/io/FileInputStream.h"
#include "vx/io/FileOutputStream.h"
#include "vx/ipc/SharedMemory.h"
#include "vx/net/SocketResult.h"
#include "vx/net/vorb/VorbTransport.h"
#include "vx/util/IniFile.h"
#include "vx/util/IniFileIterator.h"
#include "vx/util/PropertySet.h"
#include "vx/util/RegistryKey.h"
#include "vxsys/Registry.h"

#include <sstream>
#include <system_error>
#include <thread>

using namespace vx;

namespace {

/// The texts of describe and explain for the exception of `work`.
std::string described(const std::function<void()>& work)
{
    try {
        work();
    } catch (const Exception& failure) {
        return explain(failure).toUtf8();
    }
    return "nothing was thrown";
}

std::exception_ptr thrownBy(const std::function<void()>& work)
{
    try {
        work();
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

TEST(Describe, HasAnotherTextForEachResult)
{
    std::map<std::int32_t, std::string> texts;
    constexpr int LAST_ERROR = 133;
    for (int error = 0; error <= LAST_ERROR; ++error) {
        const std::int32_t result = VXResultFromNative(error);
        texts[result] = describe(result).toUtf8();
        if (result == RESULT_FAIL)
            continue;
        const int native = VXResultToNative(result);
        EXPECT_EQ(VXResultFromNative(native), result) << error;
        EXPECT_EQ(errorCodeOf(result) == std::error_condition(native, std::generic_category()), native != 0) << error;
    }
    for (const std::int32_t result : {RESULT_FALSE, RESULT_NOT_IMPLEMENTED, RESULT_NO_INTERFACE, RESULT_POINTER,
             RESULT_NOT_AVAILABLE, RESULT_BUFFER_TOO_SMALL, RESULT_NO_AGGREGATION, RESULT_CLASS_NOT_AVAILABLE,
             RESULT_END_OF_FILE, RESULT_INVALID_NAME, RESULT_MODULE_NOT_FOUND, RESULT_SYMBOL_NOT_FOUND,
             RESULT_INVALID_CHARACTER, RESULT_UNMAPPABLE_CHARACTER, RESULT_UNKNOWN_ENCODING, RESULT_NO_MORE_ITEMS,
             RESULT_STORE_CORRUPT, std::int32_t {VX_E_SOCKET_ECONNREFUSED}, std::int32_t {VX_E_SOCKET_EAI_NONAME}})
        texts[result] = describe(result).toUtf8();
    std::map<std::string, std::int32_t> results;
    for (const auto& [result, text] : texts) {
        EXPECT_FALSE(text.empty() || text.starts_with("unknown failure")) << result;
        EXPECT_TRUE(results.emplace(text, result).second) << text;
    }
    EXPECT_EQ(describe(RESULT_NOT_FOUND), u"no such file or directory");
    EXPECT_EQ(describe(VX_E_SOCKET_ETIMEDOUT).substring(0, 10), u"ETIMEDOUT ");
    EXPECT_EQ(describe(code(0x8ABCDEF0)), u"unknown failure 0x8ABCDEF0");
    EXPECT_EQ(errorCodeOf(VX_E_SOCKET_ECONNREFUSED), std::errc::connection_refused);
    EXPECT_EQ(errorCodeOf(ResultException(RESULT_DISK_FULL)), std::errc::no_space_on_device);
}

TEST(Describe, NamesTheOperationAndItsObject)
{
    const Scratch scratch;
    const ScopedVariable registry("VXSYS4_REGISTRY", (scratch / "registry").c_str());
    const String path((scratch / "missing/x").string());
    const std::string file = path.toUtf8();
    const util::RegistryKey key(VX_HKEY_USER, u"None");
    collections::ValueList<int> numbers {1, 2};
    collections::ValueMap<int, int> ages {{1, 2}, {5, 6}};
    struct {
        std::function<void()> work;
        std::string text;
    } rows[] = {
        {[&] { io::FileInputStream stream(path); }, "open " + file + ": no such file or directory"},
        {[&] { io::FileInputStream stream(path + u"."); }, "open " + file + ".: no such file or directory"},
        {[&] { io::FileOutputStream(path, io::FileOutputStream::APPEND); },
            "open " + file + ": no such file or directory"},
        {[&] { io::FileInputStream(String(scratch.getPath().string())).read(); },
            "open " + scratch.getPath().string() + ": is a directory"},
        {[&] { io::FileOutputStream(u"/dev/full", false).write('x'); }, "write /dev/full: the disk is full"},
        {[&] { exec::Process(path.getData(), nullptr); }, "start " + file + ": no such file or directory"},
        {[&] { exec::SharedLibrary library(path.getData()); },
            "open " + file + ": Failed to open shared library: no such file or directory"},
        {[&] { key.remove(); }, "remove registry key VX_HKEY_USER\\None: no such file or directory"},
        {[&] { key.getValueUINT32(u"size"); },
            "read registry value \"size\" of VX_HKEY_USER\\None: no such file or directory"},
        {[&] { net::vorb::VorbTransport transport(u"No.Such.Transport"); },
            "create transport No.Such.Transport: the component does not have this class"},
        {[&] { util::PropertySet().get(u"port"); }, "get property port: unspecified failure"},
        {[] { throw ResultException(RESULT_ACCESS_DENIED, u"open x: permission denied"); },
            "open x: permission denied"},
        {[&] { util::IniFile(path.getData(), nullptr, 1); }, "open " + file + ": no such file or directory"},
        {[&] {
             util::IniFile ini(path.getData(), nullptr, 0);
             util::IniFileKeyIterator(ini, u"a b");
         },
            "list the keys of a b: no such file or directory"},
        {[&] { numbers.get(5); }, "use index 5 of a list of 2: invalid argument"},
        {[&] { numbers.add(-1, 0); }, "use index -1 of a list of 2: invalid argument"},
        {[&] {
             for (const auto& entry : ages)
                 ages.put(entry.first + 1, 0);
         },
            "iterate over a collection that has changed meanwhile: unspecified failure"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(described(row.work), row.text);
}

TEST(Describe, TellsAllThatIsKnownOnOneLine)
{
    const std::exception_ptr ours
        = thrownBy([] { throwDuring(u"load", u"settings", ResultException(RESULT_ACCESS_DENIED, u"two\nlines")); });
    const char* const text = "vx::ResultException: load settings: two lines: permission denied (0x80070005)";
    EXPECT_EQ(describe(ours).toUtf8(), text);
    try {
        std::rethrow_exception(ours);
    } catch (const Exception& failure) {
        EXPECT_EQ((std::ostringstream() << failure).str(), text);
    }
    EXPECT_EQ(
        describe(thrownBy([] { throw std::invalid_argument("no number"); })), u"std::invalid_argument: no number");
    // Words of others are not always UTF-8, nor harmless on a terminal.
    EXPECT_EQ(describe(thrownBy([] { throw std::runtime_error("\xED\xA0\x80 \xFF\xC3\xBC \xE2\x82"); })),
        u"std::runtime_error: \uFFFD\uFFFD\uFFFD \uFFFDü \uFFFD\uFFFD");
    std::ostringstream strange;
    strange << Exception(u"a\u2028b\u0085\u009Bc\xD800\U0001F600");
    EXPECT_EQ(strange.str(), "vx::Exception: a b  c\uFFFD\U0001F600: unspecified failure (0x80004005)");
    EXPECT_EQ(describe(thrownBy([] { throw 7; })), u"exception of type int");
    EXPECT_EQ(describe(std::exception_ptr()), u"no exception");
}

TEST(Occasion, LivesAsLongAsItsException)
{
    for (int round = 0; round < 3; ++round) { // an exception gets the memory of an earlier one
        const auto noted = [&] { throwDuring(u"open", String::valueOf(round), Exception(u"why")); };
        EXPECT_EQ(described(noted), "open " + std::to_string(round) + ": why");
        EXPECT_EQ(described([] { throw Exception(u"why"); }), "why");
        EXPECT_EQ(described([&] { during(u"outer", u"work", noted); }), "open " + std::to_string(round) + ": why")
            << "what is closest to the cause stays";
    }
    Exception copy, other;
    try {
        during(u"first", u"", [] { throw Exception(); });
    } catch (const Exception& first) {
        EXPECT_EQ(described([&] { during(u"second", u"", [] { throw Exception(); }); }), "second: unspecified failure");
        copy = first;
    }
    EXPECT_EQ(getCause(copy), RESULT_FAIL);
    noteCause(copy, RESULT_DISK_FULL);
    noteCause(copy, RESULT_NOT_FOUND);
    EXPECT_EQ(getCause(Exception(copy)), RESULT_DISK_FULL) << "the first one";
    EXPECT_EQ(explain(copy).toUtf8(), "first: the disk is full");
    const ResultException exact(RESULT_ACCESS_DENIED);
    noteCause(exact, RESULT_DISK_FULL);
    EXPECT_EQ(getCause(exact), RESULT_ACCESS_DENIED) << "the class has one";
    EXPECT_EQ(getOccasion(copy), u"first");
    EXPECT_EQ(getOccasion(Exception(copy)), u"first");
    copy = other;
    EXPECT_TRUE(getOccasion(copy).isEmpty() && getCause(copy) == RESULT_FAIL);
}

TEST(Occasion, BelongsToEachOfManyExceptions)
{
    constexpr int MANY = 30'000; // 12 s if each looks at the notes of all
    std::vector<std::exception_ptr> kept;
    for (int number = 0; number < MANY; ++number)
        kept.push_back(
            thrownBy([&] { throwDuring(u"open", String::valueOf(number), ResultException(RESULT_NOT_FOUND)); }));
    for (int number = 0; number < MANY; number += 1000)
        EXPECT_EQ(described([&] { std::rethrow_exception(kept[static_cast<std::size_t>(number)]); }),
            "open " + std::to_string(number) + ": no such file or directory");
}

TEST(Occasion, BelongsToTheExceptionOnEveryThread)
{
    inThreads(4, [](int thread) {
        std::exception_ptr failure;
        for (int round = 0; round < 100; ++round) {
            const String name = String::valueOf(thread * 1000 + round);
            failure = thrownBy([&] { throwDuring(u"open", name, ResultException(RESULT_NOT_FOUND)); });
            inThreads(1, [&](int) { EXPECT_NE(describe(failure).indexOf(u"open " + name + u":"), -1); });
        }
    });
}

TEST(Occasion, IsLeftOutWithoutMemory)
{
    const ResultException failure(RESULT_DISK_FULL);
    std::string text;
    const auto write = [&] {
        try {
            throwDuring(u"write", u"a file with a long name, which takes memory", failure);
        } catch (const ResultException& thrown) {
            text = std::to_string(thrown.getResult()) + (getOccasion(thrown).isEmpty() ? " bare" : " noted");
        }
    };
    const std::string code = std::to_string(RESULT_DISK_FULL);
    EXPECT_GT(failEachAllocation(write, [&](int) { EXPECT_TRUE(text.starts_with(code)) << text; }), 0);
    EXPECT_EQ(text, code + " noted");
}

TEST(Describe, KnowsCodesAtTheEndOfTheProgram)
{
    EXPECT_EXIT(
        {
            static const struct Late {
                ~Late() { std::cerr << errorCodeOf(RESULT_NOT_FOUND).message() << '\n'; }
            } late; // destroyed after all that is used for the first time below
            errorCodeOf(RESULT_NOT_FOUND).message();
            std::exit(0);
        },
        testing::ExitedWithCode(0), "no such file or directory");
}

TEST(TerminateReport, SaysWhatEndsTheProgram)
{
    const auto end = [](void (*fails)()) {
        installTerminateReport();
        std::thread(fails).join();
    };
    EXPECT_DEATH(end([] { io::FileInputStream stream(u"/none"); }),
        "uncaught vx::ResultException: open /none: no such file or directory \\(0x80070002\\)");
    EXPECT_DEATH(end([] { throw std::runtime_error("words \xC3"); }), "uncaught std::runtime_error: words \uFFFD");
    EXPECT_DEATH(end([] { std::terminate(); }), "std::terminate was called");
    EXPECT_DEATH(end([]() noexcept { io::FileInputStream stream(u"/none"); }),
        "uncaught vx::ResultException|an exception left an operation that must not throw");
}

} // namespace
