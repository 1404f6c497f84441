#include "vxsys/File.h"

#include "Scratch.h"
#include "vxsys/Result.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace std::literals;
using namespace vxsys::results;

constexpr std::int32_t BROKEN_PIPE = code(0x8007006D);

/// A named handle that closes itself.
class File {
public:
    File(const std::u16string& path, std::uint32_t flags)
    {
        m_result = VXFileOpen(path.c_str(), flags, 0700, &m_handle);
    }
    ~File()
    {
        if (m_handle != VX_FILE_INVALID_HANDLE) {
            EXPECT_EQ(VXFileClose(m_handle), 0);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    std::int32_t write(std::string_view text) const
    {
        std::int32_t done = 0;
        const std::int32_t result = VXFileWrite(m_handle, text.data(), static_cast<std::int32_t>(text.size()), &done);
        return failed(result) ? result : done;
    }

    std::int32_t m_result;
    std::uint32_t m_handle = 7;
};

TEST(File, OpensWhatTheFlagsSay)
{
    struct {
        const char* name;
        std::uint32_t flags;
        const char* before; // null: no file
        std::int32_t result;
        const char* after; // when "xy" has been written
    } cases[] = {
        {"create", VX_FILE_WRITE | VX_FILE_CREATE, nullptr, 0, "xy"},
        {"no create", VX_FILE_WRITE, nullptr, RESULT_NOT_FOUND, ""},
        {"write over", VX_FILE_WRITE | VX_FILE_CREATE, "abc", 0, "xyc"},
        {"truncate", VX_FILE_WRITE | VX_FILE_CREATE | VX_FILE_TRUNCATE, "abc", 0, "xy"},
        {"at end", VX_FILE_WRITE | VX_FILE_CREATE | VX_FILE_AT_END, "abc", 0, "abcxy"},
        {"read and write", VX_FILE_READ | VX_FILE_WRITE, "abc", 0, "xyc"},
        {"truncate without write", VX_FILE_READ | VX_FILE_TRUNCATE, "abc", RESULT_INVALID_ARGUMENT, "abc"},
        {"neither read nor write", VX_FILE_CREATE, "abc", RESULT_INVALID_ARGUMENT, "abc"},
        {"unknown flag", VX_FILE_READ | 1, "abc", RESULT_INVALID_ARGUMENT, "abc"},
    };
    for (const auto& row : cases) {
        const Scratch scratch;
        if (row.before != nullptr)
            put(scratch / "file", row.before);
        {
            const File file(scratch.full("file"), row.flags);
            EXPECT_EQ(file.m_result, row.result) << row.name;
            EXPECT_EQ(file.m_handle == VX_FILE_INVALID_HANDLE, failed(row.result)) << row.name;
            if (!failed(row.result)) {
                EXPECT_EQ(file.write("xy"), 2) << row.name;
            }
        }
        EXPECT_EQ(contentOf(scratch / "file"), row.after) << row.name;
    }
}

TEST(File, TellsWhyItDoesNotOpen)
{
    const Scratch scratch;
    put(scratch / "file", "");
    struct {
        const char* name;
        std::u16string path;
        std::int32_t result;
    } cases[] = {
        {"missing", scratch.full("none"), RESULT_NOT_FOUND},
        {"a directory", scratch.full(), RESULT_ACCESS_DENIED},
        {"below a file", scratch.full("file\\a"), RESULT_PATH_NOT_FOUND},
        {"another drive", u"D:\\file", RESULT_PATH_NOT_FOUND},
        {"a share", u"\\\\server\\share\\file", RESULT_PATH_NOT_FOUND},
        {"empty", u"", RESULT_NOT_FOUND},
        {"a lone surrogate", scratch.full("a") + u'\xD800', RESULT_INVALID_NAME},
        {"a long name", scratch.full() + u'\\' + std::u16string(300, u'a'), RESULT_NAME_TOO_LONG},
        {"a long path", std::u16string(5000, u'a'), RESULT_NAME_TOO_LONG},
    };
    for (const auto& row : cases)
        EXPECT_EQ(File(row.path, VX_FILE_READ).m_result, row.result) << row.name;
    EXPECT_EQ(File(scratch.full(), VX_FILE_WRITE | VX_FILE_CREATE).m_result, RESULT_ACCESS_DENIED);

    std::uint32_t handle = 0;
    EXPECT_EQ(VXFileOpen(nullptr, VX_FILE_READ, 0, &handle), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(handle, VX_FILE_INVALID_HANDLE);
    EXPECT_EQ(VXFileOpen(u"a", VX_FILE_READ, 0, nullptr), RESULT_INVALID_ARGUMENT);
}

TEST(File, TakesEitherSeparatorAndTheCurrentDirectory)
{
    const Scratch scratch;
    std::filesystem::create_directory(scratch / "d\xC3\xA4");
    put(scratch / "d\xC3\xA4/\xF0\x9F\x98\x80", "x");
    std::filesystem::current_path(scratch.getPath());
    for (const std::u16string& path : {u"d\u00E4\\\U0001F600"s, u"d\u00E4/\U0001F600"s, u"C:d\u00E4\\.\\\U0001F600"s,
             u"c:" + scratch.full("d\xC3\xA4/\xF0\x9F\x98\x80").substr(2),
             scratch.full("d\xC3\xA4//\xF0\x9F\x98\x80").substr(2)})
        EXPECT_EQ(File(path, VX_FILE_READ).m_result, 0);
}

TEST(File, MakesFilesThatChildProcessesDoNotInherit)
{
    const Scratch scratch;
    const File file(scratch.full("file"), VX_FILE_WRITE | VX_FILE_CREATE);
    const int descriptor = static_cast<int>(file.m_handle);
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    struct stat status;
    ASSERT_EQ(::fstat(descriptor, &status), 0);
    const mode_t mask = ::umask(0);
    ::umask(mask);
    EXPECT_EQ(status.st_mode & 07777, 0700 & ~mask);
}

TEST(File, ReadsToTheEnd)
{
    const Scratch scratch;
    put(scratch / "file", "abcde");
    const File file(scratch.full("file"), VX_FILE_READ);
    std::int64_t size = 0;
    EXPECT_EQ(VXFileGetSize(file.m_handle, &size), 0);
    EXPECT_EQ(size, 5);

    char target[4] = "";
    std::int32_t done = -1;
    for (const std::int32_t wanted : {4, 1, 0}) {
        EXPECT_EQ(VXFileRead(file.m_handle, target, 4, &done), 0);
        EXPECT_EQ(done, wanted);
    }
    EXPECT_EQ(target[0], 'e');
    done = 9;
    EXPECT_EQ(VXFileRead(file.m_handle, target, -1, &done), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(done, 0);
    EXPECT_EQ(VXFileRead(file.m_handle, nullptr, 1, &done), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(VXFileRead(file.m_handle, target, 1, nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(file.write("x"), RESULT_INVALID_HANDLE) << "opened for reading only";
}

TEST(File, RefusesHandlesThatAreNone)
{
    const Scratch scratch;
    std::uint32_t closed = 0;
    ASSERT_EQ(VXFileOpen(scratch.full("file").c_str(), VX_FILE_WRITE | VX_FILE_CREATE, 0700, &closed), 0);
    ASSERT_EQ(VXFileClose(closed), 0);
    for (const std::uint32_t handle : {closed, VX_FILE_INVALID_HANDLE, 0x80000000U, 0x7FFFFFFFU}) {
        char byte = 0;
        std::int32_t done = 0;
        std::int64_t size = 0;
        EXPECT_EQ(VXFileRead(handle, &byte, 1, &done), RESULT_INVALID_HANDLE);
        EXPECT_EQ(VXFileWrite(handle, &byte, 1, &done), RESULT_INVALID_HANDLE);
        EXPECT_EQ(VXFileGetSize(handle, &size), RESULT_INVALID_HANDLE);
        EXPECT_EQ(VXFileSeekToEnd(handle, &size), RESULT_INVALID_HANDLE);
        EXPECT_EQ(VXFileGetPosition(handle, &size), RESULT_INVALID_HANDLE);
        EXPECT_EQ(VXFileFlush(handle), RESULT_INVALID_HANDLE);
        EXPECT_EQ(VXFileTruncate(handle, 0), RESULT_INVALID_HANDLE);
        EXPECT_EQ(VXFileClose(handle), RESULT_INVALID_HANDLE);
    }
}

TEST(File, AppendsBehindWhatOthersWrote)
{
    const Scratch scratch;
    const File first(scratch.full("file"), VX_FILE_WRITE | VX_FILE_CREATE);
    const File second(scratch.full("file"), VX_FILE_WRITE);
    EXPECT_EQ(first.write("aaa"), 3);
    std::int64_t position = 0;
    EXPECT_EQ(VXFileSeekToEnd(second.m_handle, &position), 0);
    EXPECT_EQ(position, 3);
    EXPECT_EQ(second.write("b"), 1);
    EXPECT_EQ(VXFileGetPosition(second.m_handle, &position), 0);
    EXPECT_EQ(position, 4);
    EXPECT_EQ(VXFileFlush(second.m_handle), 0);
    EXPECT_EQ(contentOf(scratch / "file"), "aaab");
}

TEST(File, CutsAndFillsWithoutMoving)
{
    const Scratch scratch;
    const File file(scratch.full("file"), VX_FILE_WRITE | VX_FILE_CREATE);
    EXPECT_EQ(file.write("abcd"), 4);
    EXPECT_EQ(VXFileTruncate(file.m_handle, 2), 0);
    EXPECT_EQ(file.write("e"), 1);
    EXPECT_EQ(contentOf(scratch / "file"), "ab\0\0e"s);
    EXPECT_EQ(VXFileTruncate(file.m_handle, 7), 0);
    EXPECT_EQ(contentOf(scratch / "file"), "ab\0\0e\0\0"s);
    EXPECT_EQ(VXFileTruncate(file.m_handle, -1), RESULT_INVALID_ARGUMENT);
}

TEST(File, IsKnownByItsIdentityUnderEachName)
{
    const Scratch scratch;
    const File file(scratch.full("file"), VX_FILE_WRITE | VX_FILE_CREATE);
    const File other(scratch.full("other"), VX_FILE_WRITE | VX_FILE_CREATE);
    std::filesystem::create_hard_link(scratch / "file", scratch / "link");
    std::filesystem::remove(scratch / "file");
    const File link(scratch.full("link"), VX_FILE_READ);
    const auto identityOf = [](const File& opened) {
        VXFileIdentity identity {};
        EXPECT_EQ(VXFileGetIdentity(opened.m_handle, &identity), 0);
        return identity;
    };
    EXPECT_TRUE(identityOf(file) == identityOf(link));
    EXPECT_FALSE(identityOf(file) == identityOf(other));

    std::FILE* const memory = ::fmemopen(nullptr, 8, "w");
    EXPECT_EQ(VXFileFromStream(memory), VX_FILE_INVALID_HANDLE);
    std::fclose(memory);
    EXPECT_EQ(VXFileFromStream(nullptr), VX_FILE_INVALID_HANDLE);
    EXPECT_EQ(VXFileFromStream(stderr), 2U);
}

/// Both ends of a pipe or a socket pair, as handles.
class Channel {
public:
    explicit Channel(bool isSocket)
    {
        if ((isSocket ? ::socketpair(AF_UNIX, SOCK_STREAM, 0, m_ends) : ::pipe(m_ends)) != 0)
            throw std::runtime_error(std::strerror(errno));
    }
    ~Channel()
    {
        closeReader();
        ::close(m_ends[1]);
    }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    void closeReader() { ::close(std::exchange(m_ends[0], -1)); }
    std::uint32_t getReader() const { return static_cast<std::uint32_t>(m_ends[0]); }
    std::uint32_t getWriter() const { return static_cast<std::uint32_t>(m_ends[1]); }

private:
    int m_ends[2];
};

class ClosedPeer : public testing::TestWithParam<bool> { };

TEST_P(ClosedPeer, IsAResultAndNoSignal)
{
    Channel channel(GetParam());
    channel.closeReader();
    std::int32_t done = 9;
    EXPECT_EQ(VXFileWrite(channel.getWriter(), "x", 1, &done), BROKEN_PIPE); // the default action would end us
    EXPECT_EQ(done, 0);
    sigset_t waiting;
    sigpending(&waiting);
    EXPECT_FALSE(sigismember(&waiting, SIGPIPE));
}

TEST_P(ClosedPeer, LeavesASignalThatWasThereBefore)
{
    sigset_t signal;
    sigset_t before;
    sigemptyset(&signal);
    sigaddset(&signal, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &signal, &before);
    ::raise(SIGPIPE);

    Channel channel(GetParam());
    channel.closeReader();
    std::int32_t done = 0;
    EXPECT_EQ(VXFileWrite(channel.getWriter(), "x", 1, &done), BROKEN_PIPE);
    const timespec atOnce {};
    EXPECT_EQ(sigtimedwait(&signal, nullptr, &atOnce), SIGPIPE);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_P(ClosedPeer, MayTakePartOfAWrite)
{
    Channel channel(GetParam());
    const std::string large(4 << 20, 'x');
    std::thread reader([&] {
        char bytes[100];
        std::int32_t done = 0;
        EXPECT_EQ(VXFileRead(channel.getReader(), bytes, sizeof bytes, &done), 0);
        channel.closeReader();
    });
    std::int32_t done = 0;
    const std::int32_t result
        = VXFileWrite(channel.getWriter(), large.data(), static_cast<std::int32_t>(large.size()), &done);
    reader.join();
    EXPECT_TRUE(result == 0 || result == BROKEN_PIPE) << std::hex << result;
    EXPECT_LT(done, static_cast<std::int32_t>(large.size()));
}

INSTANTIATE_TEST_SUITE_P(File, ClosedPeer, testing::Values(false, true),
    [](const auto& parameter) { return parameter.param ? "Socket" : "Pipe"; });

TEST(File, CountsAsFlushedWhatHasNoDisk)
{
    for (const bool isSocket : {false, true}) {
        const Channel channel(isSocket);
        EXPECT_EQ(VXFileFlush(channel.getWriter()), 0);
        std::int64_t position = 0;
        EXPECT_EQ(VXFileSeekToEnd(channel.getWriter(), &position), 0);
        EXPECT_EQ(position, -1);
    }
    EXPECT_EQ(File(u"\\dev\\null", VX_FILE_WRITE | VX_FILE_AT_END).m_result, 0);
}

int g_alarmPipe = -1;

TEST(File, ReadsOnAfterASignal)
{
    const Channel channel(false);
    g_alarmPipe = static_cast<int>(channel.getWriter());
    struct sigaction action { };
    struct sigaction before { };
    action.sa_handler = [](int) { [[maybe_unused]] const auto written = ::write(g_alarmPipe, "x", 1); };
    ASSERT_EQ(::sigaction(SIGALRM, &action, &before), 0);
    const itimerval soon {{0, 0}, {0, 20000}};
    ASSERT_EQ(::setitimer(ITIMER_REAL, &soon, nullptr), 0);

    char byte = 0;
    std::int32_t done = 0;
    EXPECT_EQ(VXFileRead(channel.getReader(), &byte, 1, &done), 0);
    EXPECT_EQ(done, 1);
    ::sigaction(SIGALRM, &before, nullptr);
}

TEST(File, TellsThatAWriteIsTooLarge)
{
    const Scratch scratch;
    const File file(scratch.full("file"), VX_FILE_WRITE | VX_FILE_CREATE);
    const SizeLimit four(4);
    EXPECT_EQ(file.write("abcdef"), 4);
    EXPECT_EQ(file.write("ef"), code(0x800700DF));
}

TEST(Result, HasNoTwinForUnknownErrors)
{
    EXPECT_EQ(VXResultFromNative(0), RESULT_OK);
    EXPECT_EQ(VXResultFromNative(ENOMEM), RESULT_OUT_OF_MEMORY);
    EXPECT_EQ(VXResultFromNative(EEXIST), RESULT_ALREADY_EXISTS);
    EXPECT_EQ(VXResultFromNative(ETIMEDOUT), RESULT_TIMED_OUT);
    for (const int unknown : {-1, -ENOENT, 100000, INT32_MAX, INT32_MIN})
        EXPECT_EQ(VXResultFromNative(unknown), RESULT_FAIL) << unknown;
}

} // namespace
