#include "vx/NumberBoxes.h"
#include "vx/String.h"
#include "vx/log/ConsoleLogWriter.h"
#include "vx/log/LogEntry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <termios.h>
#include <unistd.h>

namespace vx::log {
namespace {

/// What a writer sends to a descriptor, one read for each entry.
std::string written(int source, int target, const char16_t* text, int level, ConsoleLogWriter::Colours colours)
{
    const Reference<ConsoleLogWriter> writer = ConsoleLogWriter::create(static_cast<std::uint32_t>(target), colours);
    const Reference<LogEntry> entry = LogEntry::create();
    entry->setField(u"level", new Integer32(level));
    entry->setField(u"text", new String(text));
    entry->setField(u"name", new String(u"orders"));
    entry->setField(u"peer", new String(u"[::1]"));
    writer->process(entry.get());
    char bytes[1000];
    const ssize_t count = ::read(source, bytes, sizeof bytes);
    return std::string(bytes, static_cast<std::size_t>(count > 0 ? count : 0));
}

TEST(ConsoleLogWriter, ColoursLevelsOnATerminalOnly)
{
    using Colours = ConsoleLogWriter::Colours;
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_TRUE(master != -1 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
    const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings {};
    ASSERT_EQ(::tcgetattr(terminal, &settings), 0);
    ::cfmakeraw(&settings);
    ASSERT_EQ(::tcsetattr(terminal, TCSANOW, &settings), 0);
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    ::setenv("TERM", "xterm", 1);
    ::unsetenv("NO_COLOR");

    const std::string plain = "3 orders: out of ☕ peer=[::1]";
    EXPECT_EQ(written(master, terminal, u"out of ☕", 3, Colours::ON_A_TERMINAL), "\x1b[31m" + plain + "\x1b[0m\n");
    EXPECT_EQ(written(pipe[0], pipe[1], u"out of ☕", 3, Colours::ON_A_TERMINAL), plain + '\n');
    EXPECT_EQ(written(pipe[0], pipe[1], u"out of ☕", 3, Colours::ALWAYS), "\x1b[31m" + plain + "\x1b[0m\n");
    EXPECT_EQ(written(master, terminal, u"out of ☕", 3, Colours::NEVER), plain + '\n');
    EXPECT_EQ(written(master, terminal, u"out of ☕", 6, Colours::ALWAYS), '6' + plain.substr(1) + '\n');
    ::setenv("NO_COLOR", "1", 1);
    EXPECT_EQ(written(master, terminal, u"out of ☕", 3, Colours::ON_A_TERMINAL), plain + '\n');
    EXPECT_EQ(written(pipe[0], pipe[1], u"a\x1b[2J\r\nb\xD800\t\x9B", 0, Colours::NEVER),
        "0 orders: a␛[2J␍\n    b\uFFFD\t\uFFFD peer=[::1]\n");
    for (const int each : {master, terminal, pipe[0], pipe[1]})
        ::close(each);
}

} // namespace
} // namespace vx::log
