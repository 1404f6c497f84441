#include "tests/Told.h"
#include "tests/vx/net/SignalStorm.h"
#include "tests/vxsys/Child.h"
#include "tests/vxsys/Scratch.h"
#include "vx/Exceptions.h"
#include "vx/io/IoException.h"
#include "vx/io/MaskedConsoleInputStream.h"
#include "vx/io/StdioInputStream.h"
#include "vx/io/StdioOutputStream.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/ioctl.h>
#include <termios.h>
#include <thread>

namespace {

using namespace std::literals;
using namespace vx;
using namespace vx::io;

/// Runs `work` in a separate process, so that it may change the standard streams.
void alone(const std::function<void()>& work)
{
    EXPECT_EQ(Child([&](Child::Side&) { work(); }).wait(), 0);
}

/// The same, after a standard stream of that process was replaced by the file `path`.
void aloneWith(int standard, const std::filesystem::path& path, int flags, const std::function<void()>& work)
{
    alone([&] {
        ASSERT_EQ(::dup2(::open(path.c_str(), flags | O_CREAT | O_CLOEXEC, 0600), standard), standard) << path;
        work();
    });
}

template <class Stream>
std::string readOnce(Stream& stream, std::int32_t length)
{
    std::string bytes(static_cast<std::size_t>(length) + 1, '#');
    const std::int32_t got = stream.read(bytes.data(), length);
    return got < 0 ? std::to_string(got) : bytes.substr(0, static_cast<std::size_t>(got));
}

TEST(StdioInputStream, ReadsLineByLine)
{
    const Scratch scratch;
    put(scratch / "in", "one\ntwo words\nx\0y\n\xE4last"sv);
    aloneWith(STDIN_FILENO, scratch / "in", O_RDONLY, [&] {
        StdioInputStream stream;
        // With room for the terminator alone it reads nothing; a zero byte ends a line.
        EXPECT_EQ((Told {readOnce(stream, 1), readOnce(stream, 100), readOnce(stream, 5), stream.skip(3),
                      stream.skip(-3), readOnce(stream, 100), readOnce(stream, 100), stream.read(),
                      readOnce(stream, 100), readOnce(stream, 100)}),
            "-1 one\n two  3 -3 words\n x 228 last -1");
    });
    aloneWith(STDIN_FILENO, scratch / "out", O_WRONLY, [&] { EXPECT_THROW(StdioInputStream().read(), IoException); });
}

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define DELAYS_HANDLERS // to the next call that it knows, and a read inside the C library is none
#endif
#endif

#if !defined(DELAYS_HANDLERS)
TEST(StdioInputStream, WaitsOnWhenSignalsArrive)
{
    alone([&] {
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        ASSERT_EQ(::dup2(ends[0], STDIN_FILENO), STDIN_FILENO);
        const net::SignalStorm storm;
        std::thread writer([&] {
            for (const std::string_view piece : {"one\n"sv, "2"sv}) {
                net::SignalStorm::pass();
                EXPECT_EQ(::write(ends[1], piece.data(), piece.size()), static_cast<ssize_t>(piece.size()));
            }
            ::close(ends[1]);
        });
        StdioInputStream stream;
        EXPECT_EQ(readOnce(stream, 100), "one\n") << "signals arrive while it waits";
        EXPECT_EQ(stream.read(), '2');
        writer.join();
    });
}
#endif

TEST(StdioOutputStream, BuffersSingleBytesOnly)
{
    const Scratch scratch;
    aloneWith(STDOUT_FILENO, scratch / "out", O_WRONLY, [&] {
        StdioOutputStream stream;
        stream.write(static_cast<signed char>('a'));
        stream.write("bc", 2);
        EXPECT_EQ(contentOf(scratch / "out"), "bc");
        stream.flush();
        stream.close();
        stream.write("d", 1);
        EXPECT_EQ(contentOf(scratch / "out"), "bcad");
    });
}

TEST(MaskedConsoleInputStream, TakesKeys)
{
    struct {
        std::string_view keys;
        std::int32_t length; // of the first read
        std::string_view read; // by it and by the next one
    } cases[]
        = {{"secret\r", 100, "secret\n -1"}, {"secret\nrest", 100, "secret\n rest"}, {"se\032cret", 100, "se cret"},
            {"\032", 100, "-1 -1"}, {"abcdef", 3, "abc def"}, {"\b\bab\bc\r", 100, "ac\n -1"}, {"ab\bc\r", 2, "ab c\n"},
            {"a\b", 100, "-1 -1"}, {"x\xC3\xA4\b\r", 100, "x\n -1"}, // one key for the user
            {"x\xE4\b\r", 100, "x\n -1"}, {"\xFF\01\x7F\r", 100, "\xFF\01\x7F\n -1"}};
    for (const auto& row : cases) {
        alone([&] {
            int ends[2];
            ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
            ASSERT_EQ(::write(ends[1], row.keys.data(), row.keys.size()), static_cast<ssize_t>(row.keys.size()));
            ::close(ends[1]);
            ::dup2(ends[0], STDIN_FILENO);
            MaskedConsoleInputStream stream;
            EXPECT_EQ((Told {readOnce(stream, row.length), readOnce(stream, 100)}), row.read) << row.keys;
        });
    }
}

TEST(MaskedConsoleInputStream, TakesWhatAnotherStreamHasReadAhead)
{
    const Scratch scratch;
    put(scratch / "in", "user\nsecret\nrest\n"sv);
    aloneWith(STDIN_FILENO, scratch / "in", O_RDONLY, [&] {
        StdioInputStream lines;
        EXPECT_EQ(readOnce(lines, 100), "user\n");
        MaskedConsoleInputStream keys;
        EXPECT_EQ((Told {readOnce(keys, 100), readOnce(lines, 100), readOnce(keys, 100)}), "secret\n rest\n -1");
    });
}

TEST(MaskedConsoleInputStream, ShowsNothingAndPutsTheTerminalBack)
{
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_TRUE(master != -1 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
    const auto isEchoing = [&] {
        termios settings {};
        EXPECT_EQ(::tcgetattr(master, &settings), 0);
        return (settings.c_lflag & ECHO) != 0;
    };
    EXPECT_TRUE(isEchoing());
    Child user([&](Child::Side& side) {
        ::setsid();
        const int terminal = ::open(::ptsname(master), O_RDWR);
        ASSERT_EQ(::ioctl(terminal, TIOCSCTTY, 0), 0);
        ::dup2(terminal, STDIN_FILENO);
        MaskedConsoleInputStream stream;
        EXPECT_EQ(readOnce(stream, 100), "sec\n");
        side.tell('r');
        side.hear();
        EXPECT_THROW(readOnce(stream, 100), UserAbortException);
    });
    for (const std::string_view keys : {"sexy\177\177\177ec\r"sv, "ab\003"sv}) {
        while (isEchoing() && !user.hasEnded()) // keys that arrive before would be shown
            std::this_thread::yield();
        ASSERT_EQ(::write(master, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
        user.hear();
        EXPECT_TRUE(isEchoing());
        pollfd shown {master, POLLIN, 0};
        EXPECT_TRUE(::poll(&shown, 1, 0) == 0 || (shown.revents & POLLIN) == 0);
        user.tell('g');
    }
    EXPECT_EQ(user.wait(), 0);
    ::close(master);
}

} // namespace
