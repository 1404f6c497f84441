#include "tests/Outcome.h"
#include "tests/Slots.h"
#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Exceptions.h"
#include "vx/Result.h"
#include "vx/io/FileInputStream.h"
#include "vx/io/FileOutputStream.h"
#include "vx/util/FilePath.h"
#include "vxsys/File.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <functional>
#include <memory>
#include <sys/resource.h>
#include <thread>

namespace {

using namespace std::literals;
using namespace vx;
using vx::io::FileInputStream;
using vx::io::FileOutputStream;

constexpr unsigned ATEND = FileOutputStream::ATEND;
constexpr unsigned APPEND = FileOutputStream::APPEND;
constexpr unsigned TRUNC = FileOutputStream::TRUNC;
constexpr unsigned KEEPCLOSED = FileOutputStream::KEEPCLOSED;
constexpr unsigned LOCK = FileOutputStream::LOCK;

constexpr std::int32_t FILE_TOO_LARGE = code(0x800700DF);

void write(FileOutputStream& stream, std::string_view text)
{
    stream.write(text.data(), static_cast<std::int32_t>(text.size()));
}

TEST(FileOutputStream, AddsItsOperationsBehindThoseOfItsBase)
{
    expectSlots("FileOutputStream", slotOf(&io::OutputStream::close) + 1,
        {slotOf(&FileOutputStream::is_open), slotOf(&FileOutputStream::open), slotOf(&FileOutputStream::getSize)});
}

TEST(FileOutputStream, WritesWhereItsModeSays)
{
    struct {
        unsigned mode;
        const char* opened; // what the file "abcdef" holds then
        const char* written; // behind "X" and "Y", with "b" put in by somebody else between the two
    } cases[] = {
        {0, "abcdef", "XYcdefb"},
        {ATEND, "abcdef", "abcdefXY"},
        {TRUNC, "", "XY"},
        {APPEND, "abcdef", "abcdefXbY"},
        {APPEND | TRUNC, "", "XbY"},
        {LOCK, "abcdef", "XYcdefb"},
        {LOCK | ATEND, "abcdef", "abcdefXY"},
        {KEEPCLOSED, "abcdef", "Ybcdefb"},
        {KEEPCLOSED | ATEND, "abcdef", "abcdefXbY"},
        {KEEPCLOSED | TRUNC, "", "Yb"},
        {KEEPCLOSED | TRUNC | APPEND, "", "XbY"},
        {KEEPCLOSED | APPEND | LOCK, "abcdef", "abcdefXbY"},
    };
    for (const auto& row : cases) {
        const Scratch scratch;
        put(scratch / "file", "abcdef");
        FileOutputStream stream(String(scratch.full("file").c_str()), row.mode);
        EXPECT_EQ(contentOf(scratch / "file"), row.opened) << row.mode;
        EXPECT_EQ(stream.getMode(), row.mode);
        const bool isKeptClosed = (row.mode & KEEPCLOSED) != 0;
        EXPECT_EQ(stream.is_open(), isKeptClosed ? 0 : 1) << row.mode;
        EXPECT_EQ(stream.getHandle() == VX_FILE_INVALID_HANDLE, isKeptClosed) << row.mode;
        write(stream, "X");
        std::ofstream(scratch / "file", std::ios::app) << "b";
        stream.write(static_cast<signed char>('Y'));
        stream.write("", 0);
        stream.write("Z", -1);
        EXPECT_EQ(contentOf(scratch / "file"), row.written) << row.mode;
        EXPECT_EQ(stream.getSize(), static_cast<std::int64_t>(std::strlen(row.written))) << row.mode;
        EXPECT_EQ(stream.is_open(), isKeptClosed ? 0 : 1) << row.mode;
    }
}

TEST(FileOutputStream, TakesAPathAndOnlyAppendOrTruncate)
{
    const Scratch scratch;
    const String text(scratch.full("file").c_str());
    const util::FilePath path(text);
    write(*Reference<FileOutputStream>(new FileOutputStream(path, false)), "abc");
    write(*Reference<FileOutputStream>(new FileOutputStream(text, true)), "d");
    write(*Reference<FileOutputStream>(new FileOutputStream(path, 0)), "e");
    EXPECT_EQ(contentOf(scratch / "file"), "ebcd");
    EXPECT_EQ(FileOutputStream(text, false).getMode(), TRUNC);
    EXPECT_EQ(FileOutputStream(path, true).getMode(), ATEND);
    EXPECT_THROW(FileOutputStream(String(), APPEND), InvalidPathException);
    EXPECT_THROW(FileOutputStream(util::FilePath(String()), false), InvalidPathException);

    std::u16string folders = scratch.full("none");
    EXPECT_EQ(resultOf([&] { FileOutputStream(String((folders + u"\\file").c_str()), LOCK); }), RESULT_NOT_FOUND);
    EXPECT_EQ(resultOf([&] { FileOutputStream(String((folders + u'\xD800').c_str()), LOCK); }), RESULT_INVALID_NAME);
    const std::u16string longInBytes = scratch.full("f") + std::u16string(40, u'\u4E00');
    EXPECT_EQ(FileOutputStream(String(longInBytes.c_str()), APPEND).getSize(), 0);
}

TEST(FileOutputStream, ClosesAHandleOnlyIfItOwnsIt)
{
    const Scratch scratch;
    std::uint32_t handle = 0;
    ASSERT_EQ(VXFileOpen(scratch.full("file").c_str(), VX_FILE_WRITE | VX_FILE_CREATE, 0700, &handle), 0);
    {
        FileOutputStream stream(handle, false);
        stream.close();
        EXPECT_EQ(stream.is_open(), 1);
        EXPECT_EQ(stream.getHandle(), handle);
        EXPECT_THROW(stream.open(), InvalidPathException);
        write(stream, "abc");
        stream.wait();
        stream.signal();
    }
    {
        FileOutputStream stream(handle, true);
        write(stream, "d");
        EXPECT_EQ(stream.getSize(), 4);
        stream.close();
        EXPECT_EQ(stream.is_open(), 0);
        EXPECT_THROW(stream.open(), InvalidPathException);
    }
    std::int64_t size = 0;
    EXPECT_EQ(VXFileGetSize(handle, &size), RESULT_INVALID_HANDLE);
    FileOutputStream none(handle, true);
    EXPECT_NO_THROW(none.close());
    EXPECT_EQ(none.is_open(), 1) << "what could not be closed";
}

TEST(FileOutputStream, OpensAgainWithoutCutting)
{
    for (const unsigned mode : {TRUNC, TRUNC | APPEND, TRUNC | LOCK | ATEND, TRUNC | KEEPCLOSED | ATEND}) {
        const Scratch scratch;
        FileOutputStream stream(String(scratch.full("file").c_str()), mode);
        write(stream, "abc");
        stream.close();
        stream.close();
        stream.flush();
        EXPECT_EQ(stream.is_open(), 0);
        if ((mode & KEEPCLOSED) == 0) {
            EXPECT_EQ(resultOf([&] { write(stream, "x"); }), RESULT_INVALID_HANDLE) << mode;
            EXPECT_EQ(resultOf([&] { stream.getSize(); }), RESULT_INVALID_HANDLE) << mode;
        }
        stream.open();
        stream.open();
        EXPECT_EQ(stream.is_open(), 1);
        EXPECT_EQ(stream.getSize(), 3) << mode;
        EXPECT_EQ(stream.is_open(), (mode & KEEPCLOSED) != 0 ? 0 : 1) << "closed by the look at the size";
        stream.open();
        stream.flush();
        EXPECT_EQ(stream.is_open(), (mode & KEEPCLOSED) != 0 ? 0 : 1);
    }
}

TEST(FileOutputStream, MakesAFileAnewThatIsKeptClosed)
{
    const Scratch scratch;
    FileOutputStream stream(String(scratch.full("file").c_str()), KEEPCLOSED | APPEND);
    write(stream, "abc");
    std::filesystem::rename(scratch / "file", scratch / "old");
    write(stream, "d");
    EXPECT_EQ(contentOf(scratch / "file"), "d");
    std::filesystem::remove(scratch / "file");
    std::filesystem::create_directory(scratch / "file");
    EXPECT_EQ(resultOf([&] { write(stream, "x"); }), RESULT_ACCESS_DENIED);
    std::filesystem::remove(scratch / "file");
    write(stream, "e");
    EXPECT_EQ(contentOf(scratch / "file"), "e");
}

TEST(FileOutputStream, TellsThatThereIsNoRoomAndLetsTheNextOneIn)
{
    struct {
        unsigned mode;
        const char* left; // of "abc" and "defg" with room for 5
    } cases[] = {
        {TRUNC, "abcde"},
        {APPEND, "abc"},
        {APPEND | KEEPCLOSED, "abc"},
        {LOCK, "abc"},
        {LOCK | KEEPCLOSED | ATEND, "abc"},
    };
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

TEST(FileOutputStream, IsHeldAcrossSeveralWrites)
{
    for (const unsigned mode : {APPEND, APPEND | KEEPCLOSED, LOCK | KEEPCLOSED | ATEND}) {
        const Scratch scratch;
        const String path(scratch.full("file").c_str());
        FileOutputStream stream(path, mode);
        stream.wait();
        write(stream, "a");
        Child other([&](Child::Side& side) {
            FileOutputStream own(path, mode);
            side.tell('o');
            write(own, "x");
        });
        EXPECT_EQ(other.hear(), 'o');
        // A thread that blocks in a write with the mutex in its hand would keep out the one that it waits for.
        std::atomic<pid_t> id = 0;
        std::thread thread([&] {
            id = ::gettid();
            write(stream, "y");
        });
        while (id == 0 || stateOfThread(id) != 'S')
            std::this_thread::yield();
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

/// A writer that the system ends in the middle of its second entry, of which 5 bytes are written then.
void dieOverAnEntry(const String& path, unsigned mode, bool isInsideWait)
{
    const rlimit none {0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGXFSZ, SIG_DFL);
    FileOutputStream stream(path, mode);
    write(stream, "whole\n");
    const rlimit limit {static_cast<rlim_t>(stream.getSize()) + 5, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    if (isInsideWait)
        stream.wait();
    write(stream, "torn entry\n");
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

TEST(FileOutputStream, CutsOffNothingElse)
{
    struct {
        const char* name;
        std::function<void(const Scratch&)> change; // behind the death of the writer
        const char* left;
    } cases[] = {
        {"whole after all", [](const Scratch& scratch) { put(scratch / "file", "whole\ntorn entry\n"); },
            "whole\ntorn entry\nnext\n"},
        {"longer", [](const Scratch& scratch) { put(scratch / "file", "whole\ntorn entry\nmore\n"); },
            "whole\ntorn entry\nmore\nnext\n"},
        {"not begun", [](const Scratch& scratch) { put(scratch / "file", "whole\n"); }, "whole\nnext\n"},
        {"another file",
            [](const Scratch& scratch) {
                std::filesystem::rename(scratch / "file", scratch / "old");
                put(scratch / "file", "whole\nother ");
            },
            "whole\nother next\n"},
    };
    for (const auto& row : cases) {
        const Scratch scratch;
        const String path(scratch.full("file").c_str());
        Child victim([&](Child::Side&) { dieOverAnEntry(path, APPEND, false); });
        EXPECT_EQ(victim.wait(), -SIGXFSZ);
        row.change(scratch);
        FileOutputStream stream(path, APPEND);
        write(stream, "next\n");
        EXPECT_EQ(contentOf(scratch / "file"), row.left) << row.name;
    }
}

TEST(FileOutputStream, WritesToWhatHasNoPosition)
{
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const Scratch scratch;
    {
        const std::string link = "/proc/self/fd/" + std::to_string(ends[1]);
        FileOutputStream stream(String(std::u16string(link.begin(), link.end()).c_str()), APPEND | KEEPCLOSED);
        write(stream, "abc");
        EXPECT_EQ(stream.getSize(), 0);
    }
    char bytes[4] = "";
    FileInputStream reader(static_cast<std::uint32_t>(ends[0]), true);
    EXPECT_EQ(reader.read(bytes, 4), 3);
    FileOutputStream writer(static_cast<std::uint32_t>(ends[1]), true);
    reader.close();
    EXPECT_EQ(resultOf([&] { write(writer, "x"); }), code(0x8007006D)) << "nobody reads any more";
}

TEST(FileInputStream, ReadsToTheEnd)
{
    const Scratch scratch;
    put(scratch / "file", "abc\xFF");
    const String path(scratch.full("file").c_str());
    FileInputStream stream {util::FilePath(path)};
    char bytes[3] = "";
    EXPECT_EQ(stream.read(bytes, 3), 3);
    EXPECT_EQ(std::string(bytes, 3), "abc");
    EXPECT_EQ(stream.available(), 0);
    EXPECT_FALSE(stream.markSupported());
    EXPECT_EQ(stream.read(), 0xFF);
    EXPECT_EQ(stream.read(), -1);
    EXPECT_EQ(stream.read(bytes, 3), -1);
    EXPECT_EQ(FileInputStream(path).skip(10), 4);
    stream.close();
    stream.close();
    EXPECT_EQ(stream.getHandle(), VX_FILE_INVALID_HANDLE);
    EXPECT_EQ(resultOf([&] { stream.read(bytes, 1); }), RESULT_INVALID_HANDLE);
    EXPECT_EQ(resultOf([&] { FileInputStream(String(scratch.full().c_str())); }), RESULT_ACCESS_DENIED);
    EXPECT_EQ(resultOf([&] { FileInputStream(String(scratch.full("none").c_str())); }), RESULT_NOT_FOUND);
    EXPECT_EQ(resultOf([&] { FileInputStream {String()}; }), RESULT_NOT_FOUND);
}

TEST(FileInputStream, ClosesAHandleOnlyIfItOwnsIt)
{
    const Scratch scratch;
    put(scratch / "file", "ab");
    std::uint32_t handle = 0;
    ASSERT_EQ(VXFileOpen(scratch.full("file").c_str(), VX_FILE_READ, 0, &handle), 0);
    {
        FileInputStream stream(handle, false);
        stream.close();
        EXPECT_EQ(stream.read(), 'a');
    }
    {
        FileInputStream stream(handle, true);
        EXPECT_EQ(stream.getHandle(), handle);
        EXPECT_EQ(stream.read(), 'b');
    }
    FileInputStream none(handle, true);
    EXPECT_EQ(resultOf([&] { none.close(); }), RESULT_INVALID_HANDLE);
    EXPECT_EQ(none.getHandle(), VX_FILE_INVALID_HANDLE);
    EXPECT_EQ(resultOf([&] { const FileInputStream gone(handle, true); }), RESULT_INVALID_HANDLE);
}

} // namespace
