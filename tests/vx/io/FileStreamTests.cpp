#include "tests/Outcome.h"
#include "tests/Slots.h"
#include "tests/Threads.h"
#include "tests/Told.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/io/FileInputStream.h"
#include "vx/io/FileOutputStream.h"
#include "vx/util/FilePath.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <sys/resource.h>
#include <thread>
#include <tuple>

namespace {

using namespace std::literals;
using namespace vx;
using namespace vx::io;

constexpr unsigned ATEND = FileOutputStream::ATEND, APPEND = FileOutputStream::APPEND, TRUNC = FileOutputStream::TRUNC,
                   KEEPCLOSED = FileOutputStream::KEEPCLOSED, LOCK = FileOutputStream::LOCK;

/// A folder with one file in it.
struct Place : Scratch {
    std::string content() const { return contentOf(m_file); }

    const std::filesystem::path m_file = *this / "file";
    const String m_path {full("file").c_str()};
};

void write(FileOutputStream& stream, std::string_view text)
{
    stream.write(text.data(), static_cast<std::int32_t>(text.size()));
}

TEST(FileOutputStream, WritesWhereItsModeSays)
{
    expectSlots("FileOutputStream", slotOf(&io::OutputStream::close) + 1,
        {&FileOutputStream::is_open, &FileOutputStream::open, &FileOutputStream::getSize});
    // The content of "abcdef" after the open, and after writes of "X" and "Y"; between these another program appends
    // "b"
    const std::tuple<unsigned, const char*, const char*> cases[] = {{0, "abcdef", "XYcdefb"},
        {ATEND, "abcdef", "abcdefXY"}, {TRUNC, "", "XY"}, {APPEND, "abcdef", "abcdefXbY"}, {LOCK, "abcdef", "XYcdefb"},
        {KEEPCLOSED, "abcdef", "Ybcdefb"}, {KEEPCLOSED | ATEND, "abcdef", "abcdefXbY"}, {KEEPCLOSED | TRUNC, "", "Yb"},
        {KEEPCLOSED | TRUNC | APPEND, "", "XbY"}, {KEEPCLOSED | APPEND | LOCK, "abcdef", "abcdefXbY"}};
    for (const auto& [mode, opened, written] : cases) {
        const Place place;
        put(place.m_file, "abcdef");
        FileOutputStream stream(place.m_path, mode);
        EXPECT_EQ(place.content(), opened) << mode;
        write(stream, "X");
        std::ofstream(place.m_file, std::ios::app) << "b";
        stream.write(static_cast<signed char>('Y'));
        EXPECT_EQ((Told {place.content(), stream.getSize(), stream.is_open()}),
            (Told {written, std::strlen(written), (mode & KEEPCLOSED) == 0}))
            << mode;
    }
}

TEST(FileOutputStream, OpensAgainWithoutCutting)
{
    for (const unsigned mode : {TRUNC, TRUNC | APPEND, TRUNC | LOCK | ATEND, TRUNC | KEEPCLOSED | ATEND}) {
        const Place place;
        FileOutputStream stream(place.m_path, mode);
        write(stream, "abc");
        stream.close();
        if ((mode & KEEPCLOSED) == 0) {
            EXPECT_EQ(resultOf([&] { write(stream, "x"); }), RESULT_INVALID_HANDLE) << mode;
        }
        stream.open(); // the look at the size closes it again
        EXPECT_EQ((Told {stream.getSize(), stream.is_open()}), (Told {3, (mode & KEEPCLOSED) == 0})) << mode;
    }
}

TEST(FileOutputStream, IsHeldAcrossSeveralWrites)
{
    for (const unsigned mode : {APPEND, APPEND | KEEPCLOSED, LOCK | KEEPCLOSED | ATEND}) {
        const Place place;
        auto owned = std::make_unique<FileOutputStream>(place.m_path, mode);
        FileOutputStream& stream = *owned;
        stream.wait();
        write(stream, "a");
        EXPECT_EQ(Child([&](Child::Side&) { owned.reset(); }).wait(), 0) << "a copy that a child process drops";
        Child other([&](Child::Side& side) {
            FileOutputStream own(place.m_path, mode);
            side.tell('o');
            write(own, "x");
        });
        EXPECT_EQ(other.hear(), 'o');
        // If a thread blocked in a write while it holds the mutex, it would lock out the thread that it waits for.
        Doing thread([&] { write(stream, "y"); });
        thread.awaitWaiting();
        for (const char* text : {"b", "c", "d"}) {
            stream.wait();
            write(stream, text);
            EXPECT_EQ(stream.getSize(), *text - 'a' + 1);
            stream.signal();
        }
        EXPECT_EQ(place.content(), "abcd") << mode;
        stream.signal();
        thread.join();
        EXPECT_EQ(other.wait(), 0);
        EXPECT_EQ(place.content().size(), 6U) << mode;
    }
}

/// A writer that the system ends in the middle of its second entry, after `room` bytes of it.
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
    for (const unsigned mode : {TRUNC, APPEND, APPEND | KEEPCLOSED, LOCK, LOCK | KEEPCLOSED | ATEND}) {
        const Place place;
        FileOutputStream stream(place.m_path, mode);
        write(stream, "abc");
        {
            const SizeLimit limit(5);
            EXPECT_EQ(resultOf([&] { write(stream, "defg"); }), FILE_TOO_LARGE) << mode;
        }
        EXPECT_EQ((Told {place.content(), stream.is_open()}),
            (Told {mode == TRUNC ? "abcde" : "abc", (mode & KEEPCLOSED) == 0}))
            << mode;
        std::thread([&] { write(stream, "x"); }).join();
        FileOutputStream other(place.m_path, mode & ~TRUNC);
        write(other, "");
        EXPECT_EQ(place.content().back(), 'x') << mode;
    }
}

TEST(FileOutputStream, CutsOffWhatADeadWriterLeftTorn)
{
    enum Repair { BY_WRITE, BY_WAIT, BY_THE_NEXT_PROGRAM };
    for (const unsigned mode : {APPEND, APPEND | KEEPCLOSED, LOCK | ATEND, LOCK | KEEPCLOSED | ATEND}) {
        for (const Repair repair : {BY_WRITE, BY_WAIT, BY_THE_NEXT_PROGRAM}) {
            SCOPED_TRACE("mode " + std::to_string(mode) + ", repair " + std::to_string(repair));
            const Place place;
            std::optional<FileOutputStream> survivor;
            if (repair != BY_THE_NEXT_PROGRAM)
                survivor.emplace(place.m_path, mode);
            Child victim([&](Child::Side&) { dieOverAnEntry(place.m_path, mode, repair == BY_WAIT); });
            EXPECT_EQ(victim.wait(), -SIGXFSZ);
            EXPECT_EQ(place.content(), "whole\ntorn ");
            if (!survivor)
                survivor.emplace(place.m_path, mode);
            if (repair == BY_WAIT) {
                survivor->wait();
                EXPECT_EQ(place.content(), "whole\n");
                survivor->signal();
            }
            write(*survivor, "next\n");
            // A stream that neither moves to the end nor opens the file again has the position at which the file ended
            // before.
            const bool isAtStart = mode == (LOCK | ATEND) && repair != BY_THE_NEXT_PROGRAM;
            EXPECT_EQ(place.content(), isAtStart ? "next\n\n" : "whole\nnext\n");
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
    std::string changed = "whole\n" + entry.substr(0, PAGE - HEAD);
    changed[2000] = '#';
    struct Case {
        const char* name;
        std::string entry; // of which `room` bytes are written
        std::size_t room;
        enum { CUT, LINE_OF_ITS_OWN, APPENDED } next; // where the next entry is written
        std::string found = {}; // replaces what the writer left, unless it is empty
        std::string added = {}; // appended by another program after the kill
        bool isOther = false; // another file is in its place
    };
    const std::string torn = "torn entry\n";
    const Case cases[] = {{"all of it", torn, 5, Case::APPENDED, "whole\ntorn entry\n"},
        {"nothing of it", torn, 5, Case::APPENDED, "whole\n"},
        {"other bytes", torn, 5, Case::LINE_OF_ITS_OWN, "whole\nother "},
        {"another file", torn, 5, Case::APPENDED, "whole\ntorn ", "", true},
        {"fewer bytes", torn, 5, Case::APPENDED, "who"}, {"an entry after it", torn, 5, Case::APPENDED, "", "x\n"},
        {"a part after it", torn, 5, Case::LINE_OF_ITS_OWN, "", "x"},
        {"much after it", torn, 5, Case::LINE_OF_ITS_OWN, "", std::string(100, 'x')},
        {"a page", entry, PAGE - HEAD, Case::CUT}, {"two pages", entry, 2 * PAGE - HEAD, Case::CUT},
        {"a page with an entry after it", entry, PAGE - HEAD, Case::APPENDED, "", "x\n"},
        {"a page of other bytes", entry, PAGE - HEAD, Case::LINE_OF_ITS_OWN, changed},
        {"more than a page", entry, PAGE, Case::LINE_OF_ITS_OWN},
        {"blocks of eight pages", huge, 16 * PAGE - HEAD, Case::CUT},
        {"less than a block", huge, 15 * PAGE - HEAD, Case::LINE_OF_ITS_OWN}};
    for (const auto& row : cases) {
        SCOPED_TRACE(row.name);
        const Place place;
        Child victim([&](Child::Side&) { dieOverAnEntry(place.m_path, APPEND, false, row.entry, row.room); });
        EXPECT_EQ(victim.wait(), -SIGXFSZ);
        EXPECT_EQ(place.content(), "whole\n" + row.entry.substr(0, row.room));
        if (row.isOther)
            std::filesystem::rename(place.m_file, place / "old");
        if (!row.found.empty())
            put(place.m_file, row.found);
        std::ofstream(place.m_file, std::ios::app) << row.added;
        const std::string found = place.content();
        FileOutputStream stream(place.m_path, APPEND);
        stream.wait();
        write(stream, "next\n");
        stream.signal();
        EXPECT_EQ(place.content(),
            (row.next == Case::CUT ? "whole\n" : found) + (row.next == Case::LINE_OF_ITS_OWN ? "\nnext\n" : "next\n"));
    }
}

TEST(FileInputStream, ReadsToTheEnd)
{
    const Place place;
    put(place.m_file, "abc\xFF");
    FileInputStream stream {util::FilePath(place.m_path)};
    char bytes[4] = "";
    EXPECT_EQ((Told {stream.read(bytes, 3), bytes, stream.read(), stream.read()}), "3 abc 255 -1");
    EXPECT_EQ(FileInputStream(place.m_path).skip(10), 4);
    stream.close();
    EXPECT_EQ(resultOf([&] { stream.read(bytes, 1); }), RESULT_INVALID_HANDLE);
    EXPECT_EQ(resultOf([&] { FileInputStream(String(place.full().c_str())); }), RESULT_IS_DIRECTORY);
    EXPECT_EQ(resultOf([&] { FileInputStream {String()}; }), RESULT_NOT_FOUND);
    EXPECT_EQ(
        resultOf([&] { FileOutputStream(String((place.full() + u"\\no\\file").c_str()), LOCK); }), RESULT_NOT_FOUND);
    EXPECT_THROW(FileOutputStream(String(), APPEND), InvalidPathException);
}

} // namespace
