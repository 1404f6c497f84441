#include "tests/Outcome.h"
#include "tests/Slots.h"
#include "tests/Threads.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/io/FileInputStream.h"
#include "vx/io/FileOutputStream.h"
#include "vx/util/FilePath.h"

#include <gtest/gtest.h>

#include <memory>
#include <sys/resource.h>
#include <thread>
#include <tuple>
#include <utility>

namespace {

using namespace std::literals;
using namespace vx;
using namespace vx::io;

constexpr unsigned ATEND = FileOutputStream::ATEND, APPEND = FileOutputStream::APPEND, TRUNC = FileOutputStream::TRUNC,
                   KEEPCLOSED = FileOutputStream::KEEPCLOSED, LOCK = FileOutputStream::LOCK;

void write(FileOutputStream& stream, std::string_view text)
{
    stream.write(text.data(), static_cast<std::int32_t>(text.size()));
}

TEST(FileOutputStream, WritesWhereItsModeSays)
{
    expectSlots("FileOutputStream", slotOf(&io::OutputStream::close) + 1,
        {&FileOutputStream::is_open, &FileOutputStream::open, &FileOutputStream::getSize});
    // What "abcdef" is when it is open, and behind "X" and "Y", with "b" put in by somebody else between the two
    const std::tuple<unsigned, const char*, const char*> cases[] = {{0, "abcdef", "XYcdefb"},
        {ATEND, "abcdef", "abcdefXY"}, {TRUNC, "", "XY"}, {APPEND, "abcdef", "abcdefXbY"}, {LOCK, "abcdef", "XYcdefb"},
        {KEEPCLOSED, "abcdef", "Ybcdefb"}, {KEEPCLOSED | ATEND, "abcdef", "abcdefXbY"}, {KEEPCLOSED | TRUNC, "", "Yb"},
        {KEEPCLOSED | TRUNC | APPEND, "", "XbY"}, {KEEPCLOSED | APPEND | LOCK, "abcdef", "abcdefXbY"}};
    for (const auto& [mode, opened, written] : cases) {
        const Scratch scratch;
        put(scratch / "file", "abcdef");
        FileOutputStream stream(String(scratch.full("file").c_str()), mode);
        EXPECT_EQ(contentOf(scratch / "file"), opened) << mode;
        write(stream, "X");
        std::ofstream(scratch / "file", std::ios::app) << "b";
        stream.write(static_cast<signed char>('Y'));
        EXPECT_EQ(contentOf(scratch / "file"), written) << mode;
        EXPECT_EQ(stream.getSize(), static_cast<std::int64_t>(std::strlen(written))) << mode;
        EXPECT_EQ(stream.is_open(), (mode & KEEPCLOSED) != 0 ? 0 : 1) << mode;
    }
}

TEST(FileOutputStream, OpensAgainWithoutCutting)
{
    for (const unsigned mode : {TRUNC, TRUNC | APPEND, TRUNC | LOCK | ATEND, TRUNC | KEEPCLOSED | ATEND}) {
        const Scratch scratch;
        FileOutputStream stream(String(scratch.full("file").c_str()), mode);
        write(stream, "abc");
        stream.close();
        if ((mode & KEEPCLOSED) == 0) {
            EXPECT_EQ(resultOf([&] { write(stream, "x"); }), RESULT_INVALID_HANDLE) << mode;
        }
        stream.open();
        EXPECT_EQ(stream.getSize(), 3) << mode;
        EXPECT_EQ(stream.is_open(), (mode & KEEPCLOSED) != 0 ? 0 : 1) << "closed by the look at the size";
    }
}

TEST(FileOutputStream, IsHeldAcrossSeveralWrites)
{
    for (const unsigned mode : {APPEND, APPEND | KEEPCLOSED, LOCK | KEEPCLOSED | ATEND}) {
        const Scratch scratch;
        const String path(scratch.full("file").c_str());
        auto owned = std::make_unique<FileOutputStream>(path, mode);
        FileOutputStream& stream = *owned;
        stream.wait();
        write(stream, "a");
        EXPECT_EQ(Child([&](Child::Side&) { owned.reset(); }).wait(), 0) << "a copy that a child process drops";
        Child other([&](Child::Side& side) {
            FileOutputStream own(path, mode);
            side.tell('o');
            write(own, "x");
        });
        EXPECT_EQ(other.hear(), 'o');
        // A thread that blocks in a write with the mutex in its hand would keep out the one that it waits for.
        Doing thread([&] { write(stream, "y"); });
        thread.awaitWaiting();
        for (const char* text : {"b", "c", "d"}) {
            stream.wait();
            write(stream, text);
            EXPECT_EQ(stream.getSize(), *text - 'a' + 1);
            stream.signal();
        }
        EXPECT_EQ(contentOf(scratch / "file"), "abcd") << mode;
        stream.signal();
        thread.join();
        EXPECT_EQ(other.wait(), 0);
        EXPECT_EQ(contentOf(scratch / "file").size(), 6U) << mode;
    }
}

/// A writer that the system ends in the middle of its second entry, of which `room` bytes are written then.
void dieOverAnEntry(
    const String& path, unsigned mode, bool isInsideWait, std::string_view entry = "torn entry\n", rlim_t room = 5)
{
    const rlimit none {0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGXFSZ, SIG_DFL);
    FileOutputStream stream(path, mode);
    write(stream, "whole\n");
    const rlimit limit {static_cast<rlim_t>(stream.getSize()) + room, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    if (isInsideWait)
        stream.wait();
    write(stream, entry);
}

constexpr std::int32_t FILE_TOO_LARGE = code(0x800700DF);

TEST(FileOutputStream, TellsThatThereIsNoRoomAndLetsTheNextOneIn)
{
    struct {
        unsigned mode;
        const char* left; // of "abc" and "defg" with room for 5
    } cases[] = {{TRUNC, "abcde"}, {APPEND, "abc"}, {APPEND | KEEPCLOSED, "abc"}, {LOCK, "abc"},
        {LOCK | KEEPCLOSED | ATEND, "abc"}};
    for (const auto& row : cases) {
        const Scratch scratch;
        const String path(scratch.full("file").c_str());
        FileOutputStream stream(path, row.mode);
        write(stream, "abc");
        {
            const SizeLimit limit(5);
            EXPECT_EQ(resultOf([&] { write(stream, "defg"); }), FILE_TOO_LARGE) << row.mode;
        }
        EXPECT_EQ(contentOf(scratch / "file"), row.left) << row.mode;
        EXPECT_EQ(stream.is_open(), (row.mode & KEEPCLOSED) != 0 ? 0 : 1) << row.mode;
        std::thread([&] { write(stream, "x"); }).join();
        FileOutputStream other(path, row.mode & ~TRUNC);
        write(other, "");
        EXPECT_EQ(contentOf(scratch / "file").back(), 'x') << row.mode;
    }
}

TEST(FileOutputStream, CutsOffWhatADeadWriterLeftTorn)
{
    enum Repair { BY_WRITE, BY_WAIT, BY_THE_NEXT_PROGRAM };
    for (const unsigned mode : {APPEND, APPEND | KEEPCLOSED, LOCK | ATEND, LOCK | KEEPCLOSED | ATEND}) {
        for (const Repair repair : {BY_WRITE, BY_WAIT, BY_THE_NEXT_PROGRAM}) {
            SCOPED_TRACE("mode " + std::to_string(mode) + ", repair " + std::to_string(repair));
            const Scratch scratch;
            const String path(scratch.full("file").c_str());
            std::unique_ptr<FileOutputStream> survivor;
            if (repair != BY_THE_NEXT_PROGRAM)
                survivor = std::make_unique<FileOutputStream>(path, mode);
            Child victim([&](Child::Side&) { dieOverAnEntry(path, mode, repair == BY_WAIT); });
            EXPECT_EQ(victim.wait(), -SIGXFSZ);
            EXPECT_EQ(contentOf(scratch / "file"), "whole\ntorn ");
            if (repair == BY_THE_NEXT_PROGRAM)
                survivor = std::make_unique<FileOutputStream>(path, mode);
            if (repair == BY_WAIT) {
                survivor->wait();
                EXPECT_EQ(contentOf(scratch / "file"), "whole\n");
                survivor->signal();
            }
            write(*survivor, "next\n");
            // A survivor that neither moves to the end nor opens again stands where the file ended for it.
            const bool isAtStart = mode == (LOCK | ATEND) && repair != BY_THE_NEXT_PROGRAM;
            EXPECT_EQ(contentOf(scratch / "file"), isAtStart ? "next\n\n" : "whole\nnext\n");
        }
    }
}

std::string longEntry(std::size_t length)
{
    std::string entry;
    while (entry.size() < length)
        entry += std::to_string(entry.size()) + ' ';
    entry.resize(length - 1);
    return entry + '\n';
}

TEST(FileOutputStream, CutsOffOnlyWhatIsProvedToBeTheDeadWriters)
{
    constexpr std::size_t PAGE = 4096, HEAD = 6; // "whole\n" comes first
    const std::string entry = longEntry(20'000), huge = longEntry(3'000'000);
    const std::string page = entry.substr(0, PAGE - HEAD);
    std::string changed = page;
    changed[2000] = '#';
    struct {
        const char* name;
        std::string entry; // of which `room` bytes are written
        std::size_t room;
        const char* found; // instead of what the writer left; null for just that
        std::string added; // by another program after its death
        const char* left; // before "next\n"; null for all that was found
        bool isOnLineOfItsOwn;
    } cases[] = {
        {"all of it", "torn entry\n", 5, "whole\ntorn entry\n", "", nullptr, false},
        {"nothing of it", "torn entry\n", 5, "whole\n", "", nullptr, false},
        {"other bytes", "torn entry\n", 5, "whole\nother ", "", nullptr, true},
        {"fewer bytes", "torn entry\n", 5, "who", "", nullptr, false},
        {"an entry after it", "torn entry\n", 5, nullptr, "x\n", nullptr, false},
        {"a part after it", "torn entry\n", 5, nullptr, "x", nullptr, true},
        {"much after it", "torn entry\n", 5, nullptr, std::string(100, 'x'), nullptr, true},
        {"a page", entry, PAGE - HEAD, nullptr, "", "whole\n", false},
        {"two pages", entry, 2 * PAGE - HEAD, nullptr, "", "whole\n", false},
        {"a page with an entry after it", entry, PAGE - HEAD, nullptr, "x\n", nullptr, false},
        {"a page of other bytes", entry, PAGE - HEAD, nullptr, "", nullptr, true},
        {"more than a page", entry, PAGE, nullptr, "", nullptr, true},
        {"blocks of eight pages", huge, 16 * PAGE - HEAD, nullptr, "", "whole\n", false},
        {"less than a block", huge, 15 * PAGE - HEAD, nullptr, "", nullptr, true},
    };
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const Scratch scratch;
        const String path(scratch.full("file").c_str());
        Child victim([&](Child::Side&) { dieOverAnEntry(path, APPEND, false, row.entry, row.room); });
        EXPECT_EQ(victim.wait(), -SIGXFSZ);
        EXPECT_EQ(contentOf(scratch / "file"), "whole\n" + row.entry.substr(0, row.room));
        if (row.found != nullptr)
            put(scratch / "file", row.found);
        if (row.name == "a page of other bytes"sv)
            put(scratch / "file", "whole\n" + changed);
        std::ofstream(scratch / "file", std::ios::app) << row.added;
        const std::string found = contentOf(scratch / "file");
        FileOutputStream stream(path, APPEND);
        stream.wait();
        write(stream, "next\n");
        stream.signal();
        const std::string expected = row.left != nullptr ? row.left : found;
        EXPECT_EQ(contentOf(scratch / "file"), expected + (row.isOnLineOfItsOwn ? "\nnext\n" : "next\n"));
    }
}

TEST(FileOutputStream, RepairsNoOtherFile)
{
    const Scratch scratch;
    const String path(scratch.full("file").c_str());
    Child victim([&](Child::Side&) { dieOverAnEntry(path, APPEND, false); });
    EXPECT_EQ(victim.wait(), -SIGXFSZ);
    std::filesystem::rename(scratch / "file", scratch / "old");
    put(scratch / "file", "whole\ntorn ");
    FileOutputStream stream(path, APPEND);
    write(stream, "next\n");
    EXPECT_EQ(contentOf(scratch / "file"), "whole\ntorn next\n");
}

TEST(FileInputStream, ReadsToTheEnd)
{
    const Scratch scratch;
    put(scratch / "file", "abc\xFF");
    const String path(scratch.full("file").c_str());
    FileInputStream stream {util::FilePath(path)};
    char bytes[4] = "";
    EXPECT_EQ(stream.read(bytes, 3), 3);
    EXPECT_STREQ(bytes, "abc");
    EXPECT_EQ(stream.read(), 0xFF);
    EXPECT_EQ(stream.read(), -1);
    EXPECT_EQ(FileInputStream(path).skip(10), 4);
    stream.close();
    EXPECT_EQ(resultOf([&] { stream.read(bytes, 1); }), RESULT_INVALID_HANDLE);
    EXPECT_EQ(resultOf([&] { FileInputStream(String(scratch.full().c_str())); }), RESULT_IS_DIRECTORY);
    EXPECT_EQ(resultOf([&] { FileInputStream {String()}; }), RESULT_NOT_FOUND);
    EXPECT_EQ(
        resultOf([&] { FileOutputStream(String((scratch.full() + u"\\no\\file").c_str()), LOCK); }), RESULT_NOT_FOUND);
    EXPECT_THROW(FileOutputStream(String(), APPEND), InvalidPathException);
}

} // namespace
